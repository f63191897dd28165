#include "ProgressLine.h"

#include <algorithm>
#include <cstddef>

namespace vireo {
namespace {

constexpr std::size_t kWidth = 40;
constexpr const char* kEraseToEnd = "\x1b[K";

}  // namespace

void ProgressLine::show(const std::string& what, const std::string& activity, int percent) {
    const std::string prefix = activity.empty() ? "" : activity + ' ';
    if (!m_isTerminal) {
        m_out << prefix << percent << " %\n" << std::flush;
        return;
    }
    const std::size_t full = static_cast<std::size_t>(std::clamp(percent, 0, 100)) * kWidth / 100;
    m_out << '\r' << what << ": " << prefix << '[' << std::string(full, '#')
          << std::string(kWidth - full, '.') << "] " << percent << " %" << kEraseToEnd
          << std::flush;
    m_isDrawn = true;
}

void ProgressLine::end() {
    if (m_isDrawn) {
        m_out << '\r' << kEraseToEnd << std::flush;
        m_isDrawn = false;
    }
}

}  // namespace vireo
