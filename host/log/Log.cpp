#include "log/Log.h"

#include <cstdarg>
#include <cstdio>
#include <string>
#include <string_view>

#include "Ports.h"

namespace vireo {

constinit std::atomic<int> g_logLevel{kLogInfo};

namespace {

constexpr std::size_t kShortLine = 512;
constexpr std::size_t kLongestLine = 64U << 10U;
constexpr std::string_view kCutMark = " [cut]";

constinit PlatformPorts g_ports;

void writeLine(const char* component, const char* file, int level, int line,
               std::string_view text) noexcept {
    if (g_ports.log != nullptr) {
        g_ports.log->write(component, file, level, line, text);
    }
}

}  // namespace

void installPorts(const PlatformPorts& ports) {
    g_ports = ports;
}

const PlatformPorts& installedPorts() noexcept {
    return g_ports;
}

void setLogLevel(int level) noexcept {
    g_logLevel.store(level, std::memory_order_relaxed);
}

void logAppUni(const char* component, const char* file, int level, int line, const char* format,
               ...) noexcept {
    std::va_list arguments;
    va_start(arguments, format);
    std::va_list again;
    va_copy(again, arguments);
    char shortLine[kShortLine];
    const int length = std::vsnprintf(shortLine, sizeof shortLine, format, arguments);
    va_end(arguments);
    if (length >= 0 && static_cast<std::size_t>(length) < sizeof shortLine) {
        writeLine(component, file, level, line, {shortLine, static_cast<std::size_t>(length)});
    } else if (length >= 0) {
        try {
            const auto whole = static_cast<std::size_t>(length);
            std::string text(whole < kLongestLine ? whole : kLongestLine, '\0');
            std::vsnprintf(text.data(), text.size() + 1, format, again);
            if (whole > kLongestLine) {
                text.replace(text.size() - kCutMark.size(), kCutMark.size(), kCutMark);
            }
            writeLine(component, file, level, line, text);
        } catch (...) {
            writeLine(component, file, level, line, {shortLine, sizeof shortLine - 1});
        }
    }
    va_end(again);
}

void logExc(const char* component, const char* file, int line, const char* where,
            const std::exception& exception) noexcept {
    if (loggingOnUni(kLogError)) {
        logAppUni(component, file, kLogError, line, "%s: %s", where, exception.what());
    }
}

void logExc(const char* text, const char* detail, const char* component, int line,
            int severity) noexcept {
    if (loggingOnUni(severity)) {
        logAppUni(component, "event", severity, line, "%s%s%s", text, *detail != '\0' ? ": " : "",
                  detail);
    }
}

}  // namespace vireo
