#include "maintenance/DeviceReboot.h"

#include <ctime>
#include <utility>

#include "log/Log.h"
#include "maintenance/DeviceShell.h"

namespace vireo {
namespace {

constexpr const char* kCommand = "/sbin/reboot";

void logLine(int level, int line, const std::string& text) {
    if (loggingOnUni(level)) {
        logAppUni("DeviceReboot", "./host/maintenance/DeviceReboot", level, line, "%s",
                  text.c_str());
    }
}

std::string now() {
    const std::time_t time = std::time(nullptr);
    std::tm parts{};
    char text[32] = {};
    ::gmtime_r(&time, &parts);
    std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ", &parts);
    return text;
}

}  // namespace

DeviceReboot::DeviceReboot(const std::filesystem::path& root, bool isReal, Hooks hooks)
    : m_marker(ConfinedRoot(root), "", kMarker), m_isReal(isReal), m_hooks(std::move(hooks)) {
    std::string time;
    std::string error;
    const bool isRead = m_marker.read(time, error);
    if (isRead && !time.empty()) {
        logLine(kLogInfo, __LINE__,
                "this start follows the reboot of " + time.substr(0, time.find('\n')));
    }
    if ((isRead && time.empty()) || m_marker.remove(error)) {
        return;
    }
    logLine(kLogError, __LINE__, error);
}

bool DeviceReboot::reboot(std::string& /*error*/) {
    if (!m_isAskedFor.exchange(true)) {
        m_hooks.later([this] { carryOut(); });
    }
    return true;
}

void DeviceReboot::carryOut() {
    std::string error;
    if (m_isReal) {
        const int status = DeviceShell::execute(kCommand, error);
        if (status != 0) {
            logLine(kLogError, __LINE__,
                    error.empty() ? std::string(kCommand) + " failed with exit status " +
                                        std::to_string(status)
                                  : error);
            m_isAskedFor = false;  // it can be tried again
        }
        return;
    }
    logLine(kLogWarning, __LINE__, "reboot: this process ends, to be started again");
    if (!m_marker.replace(now() + '\n', error)) {
        logLine(kLogError, __LINE__, error);
    }
    m_isUnderWay = true;
    m_hooks.end();
}

}  // namespace vireo
