#include "signature/SignedImages.h"

#include <exception>
#include <system_error>
#include <utility>

#include "device/AdminProgressCallback.h"
#include "log/Log.h"
#include "signature/ImageBurn.h"
#include "signature/ImageVerifier.h"
#include "signature/TrustedKeys.h"

namespace vireo {

SignedImages::SignedImages(FlashPort& flash, SoftwareBanks& banks, ImagePolicy policy)
    : m_flash(flash), m_banks(banks), m_policy(std::move(policy)) {}

/// An image of which everything but the payload is good.
std::optional<ImageFile> SignedImages::open(const std::string& path,
                                            const std::string& hardwareVariant,
                                            std::string& reason) {
    std::optional<ImageFile> image = ImageFile::open(path, reason);
    if (!image) {
        return std::nullopt;
    }
    ImageVerifier::Demands demands;
    demands.hardwareVariant = hardwareVariant;
    const SoftwareBanks::View now = m_banks.view();
    const std::optional<ImageHeader>& running = now.of(now.running).header;
    if (now.running != Bank::eNone && running && !m_policy.allowsDowngrade) {
        demands.oldestVersion = running->version;
    }
    const std::uint64_t free = m_flash.freeBytes();
    demands.room = free > kReserve ? free - kReserve : 0;
    if (!ImageVerifier::checkHeader(*image, demands, TrustedKeys(m_policy.keyDirectory), reason)) {
        return std::nullopt;
    }
    return image;
}

bool SignedImages::verify(const std::string& path, const std::string& hardwareVariant,
                          std::string& error) {
    std::string reason;
    try {
        const std::optional<ImageFile> image = open(path, hardwareVariant, reason);
        if (image && ImageVerifier::checkPayload(*image, reason)) {
            return true;
        }
    } catch (const std::exception& exception) {
        reason = exception.what();
    }
    error = "cannot use the image \"" + path + "\": " + reason;
    return false;
}

bool SignedImages::burn(const std::string& path, AdminProgressCallback& progress,
                        std::string& error) {
    const std::lock_guard lock(m_mutex);
    std::string reason;
    try {
        if (m_stopping || m_active) {
            reason = m_stopping ? "the phone is being stopped" : "another burn is under way";
        } else if (const std::optional<Bank> target = m_banks.target(reason)) {
            std::optional<ImageFile> image = open(path, m_policy.hardwareVariant, reason);
            if (image && start(std::move(*image), *target, progress, reason)) {
                return true;
            }
        }
    } catch (const std::exception& exception) {
        reason = exception.what();
    }
    error = "cannot burn the image \"" + path + "\": " + reason;
    return false;
}

bool SignedImages::start(ImageFile image, Bank target, AdminProgressCallback& progress,
                         std::string& reason) {
    if (m_thread.joinable()) {
        m_thread.join();
    }
    try {
        m_active = true;
        m_thread = std::thread([this, target, &progress, opened = std::move(image)] {
            run(opened, target, progress);
        });
        return true;
    } catch (const std::system_error& exception) {
        m_active = false;
        reason = exception.what();
        return false;
    }
}

void SignedImages::stop() {
    std::thread thread;
    {
        const std::lock_guard lock(m_mutex);
        m_stopping = true;
        thread.swap(m_thread);
    }
    if (thread.joinable()) {
        thread.join();
    }
}

void SignedImages::run(const ImageFile& image, Bank target, AdminProgressCallback& progress) {
    int last = kDone;
    try {
        ImageBurn burn(m_flash, m_banks, m_stopping);
        burn.run(image, target, [&progress](int percent) { progress.progressNotify(percent); });
    } catch (const std::exception& exception) {
        last = kFailed;
        logExc("SignedImages", "./host/signature/SignedImages", __LINE__, "the burn failed",
               exception);
    }
    // Whoever is told the end may start the next download at once.
    m_active = false;
    progress.progressNotify(last);
}

}  // namespace vireo
