#pragma once

#include <atomic>
#include <filesystem>
#include <mutex>
#include <optional>
#include <string>
#include <thread>

#include "device/DevicePorts.h"
#include "image/ImageFile.h"
#include "image/SoftwareBanks.h"

namespace vireo {

/// What images a phone takes.
struct ImagePolicy {
    std::string hardwareVariant;
    std::filesystem::path keyDirectory;  ///< of the trusted keys, read for each image
    bool allowsDowngrade = false;
};

/// Signed software images, burnt into the bank that the phone does not run from. Safe from every
/// thread.
class SignedImages : public ImagePort {
public:
    static constexpr int kDone = 99;
    static constexpr int kFailed = -1;
    /// Flash memory that an image leaves to the boot marker.
    static constexpr std::uint64_t kReserve = 64U << 10U;

    /// Both outlive this.
    SignedImages(FlashPort& flash, SoftwareBanks& banks, ImagePolicy policy);
    SignedImages(const SignedImages&) = delete;
    SignedImages& operator=(const SignedImages&) = delete;
    ~SignedImages() override { stop(); }

    std::string hardwareVariant() override { return m_policy.hardwareVariant; }
    /// Reads the whole image.
    bool verify(const std::string& path, const std::string& hardwareVariant,
                std::string& error) override;
    /// Refuses what `verify` would refuse for this phone, but for a payload with another digest:
    /// that shows on the way, before the bank counts for anything. The last report comes when the
    /// next start is from the new software.
    bool burn(const std::string& path, AdminProgressCallback& progress,
              std::string& error) override;
    bool isActive() override { return m_active.load(); }

    /// Ends a burn that is under way, with a report of its failure, and waits for that. No other is
    /// started after this. Not on the thread of a report.
    void stop();

private:
    std::optional<ImageFile> open(const std::string& path, const std::string& hardwareVariant,
                                  std::string& reason);
    void run(const ImageFile& image, Bank target, AdminProgressCallback& progress);
    bool start(ImageFile image, Bank target, AdminProgressCallback& progress, std::string& reason);

    FlashPort& m_flash;
    SoftwareBanks& m_banks;
    const ImagePolicy m_policy;
    std::mutex m_mutex;  ///< guards the thread's beginning and end
    std::thread m_thread;
    std::atomic<bool> m_active{false};
    std::atomic<bool> m_stopping{false};
};

}  // namespace vireo
