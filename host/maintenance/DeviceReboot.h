#pragma once

#include <atomic>
#include <filesystem>
#include <functional>
#include <string>

#include "device/DevicePorts.h"
#include "files/PrivateFile.h"

namespace vireo {

/// The reboot of the phone. It comes after what the message thread is doing, so that whoever asked
/// for it has the answer. Where the phone is only stood for, a marker with the time is written
/// below the root, and this process ends, for its supervisor to start it again; the next start
/// removes the marker.
class DeviceReboot : public RebootPort {
public:
    /// Below the root.
    static constexpr const char* kMarker = "reboot-requested";

    struct Hooks {
        /// Runs a task when the message thread has sent its answers.
        std::function<void(std::function<void()>)> later;
        /// Has this process end in order.
        std::function<void()> end;
    };

    /// With `isReal` this machine is rebooted. Removes the marker of the last reboot and says so.
    DeviceReboot(const std::filesystem::path& root, bool isReal, Hooks hooks);

    bool reboot(std::string& error) override;
    /// Whether this process ends for a reboot.
    bool isUnderWay() const { return m_isUnderWay.load(); }

private:
    void carryOut();

    const PrivateFile m_marker;
    const bool m_isReal;
    const Hooks m_hooks;
    std::atomic<bool> m_isAskedFor{false};
    std::atomic<bool> m_isUnderWay{false};
};

}  // namespace vireo
