#pragma once

#include <atomic>
#include <filesystem>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "device/DevicePorts.h"
#include "files/ConfinedRoot.h"
#include "messages/FileDescriptor.h"

namespace vireo {

/// Software images with a plain header, burnt into a directory that stands for the phone's flash
/// memory. The image there is replaced in one step: it is the old one or the new one, in full. Safe
/// from every thread.
class PlainImage : public ImagePort {
public:
    static constexpr const char* kName = "software.img";
    static constexpr const char* kHiddenName = ".software.img";  ///< while it is burnt
    static constexpr int kDone = 99;
    static constexpr int kFailed = -1;

    /// `flashDirectory` is relative to the device root; it is made by the first burn. Removes what
    /// a burn left that did not come to its end.
    PlainImage(const std::filesystem::path& deviceRoot, const std::string& flashDirectory,
               std::string hardwareVariant);
    PlainImage(const PlainImage&) = delete;
    PlainImage& operator=(const PlainImage&) = delete;
    ~PlainImage() override { stop(); }

    std::string hardwareVariant() override { return m_hardwareVariant; }
    bool verify(const std::string& path, const std::string& hardwareVariant,
                std::string& error) override;
    /// Refuses what `verify` would refuse for this phone.
    bool burn(const std::string& path, AdminProgressCallback& progress,
              std::string& error) override;
    bool isActive() override { return m_active.load(); }

    /// Ends a burn that is under way, with a report of its failure, and waits for that. No other is
    /// started after this. Not on the thread of a report.
    void stop();

private:
    void run(const FileDescriptor& image, std::uint64_t size, AdminProgressCallback& progress);
    void copy(const FileDescriptor& image, std::uint64_t size, AdminProgressCallback& progress);

    ConfinedRoot m_device;
    std::vector<std::string> m_flash;  ///< the directories that lead there
    std::string m_hardwareVariant;
    std::mutex m_mutex;  ///< guards the thread's beginning and end
    std::thread m_thread;
    std::atomic<bool> m_active{false};
    std::atomic<bool> m_stopping{false};
};

}  // namespace vireo
