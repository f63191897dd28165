#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <vector>

#include "image/ImageFile.h"
#include "image/SoftwareBanks.h"

namespace vireo {

/// Writes an image into the bank that the phone does not run from, and has the next start try it.
/// The digest is computed of the very bytes that are written and compared before anything counts on
/// them; then they are read back from the medium.
class ImageBurn {
public:
    /// Percent from 0 to 98; 99 is for whoever knows that it has ended well.
    using Progress = std::function<void(int percent)>;

    /// Everything outlives this. `stopping` ends the burn soon.
    ImageBurn(FlashPort& flash, SoftwareBanks& banks, const std::atomic<bool>& stopping)
        : m_flash(flash), m_banks(banks), m_stopping(stopping) {}

    /// Throws a `StorageError` that says why the bank was not changed.
    void run(const ImageFile& image, Bank target, const Progress& progress);

    /// Whether the payload in a bank is the one of its header; see `SoftwareBanks`.
    static bool isPayloadWhole(FlashPort& flash, FlashPort::File file, const ImageHeader& header);

private:
    void write(const ImageFile& image, const FlashFile& file);
    void readBack(const ImageFile& image, const FlashFile& file);
    void advance(std::size_t count);

    FlashPort& m_flash;
    SoftwareBanks& m_banks;
    const std::atomic<bool>& m_stopping;
    const Progress* m_progress = nullptr;
    std::uint64_t m_total = 0;
    std::uint64_t m_done = 0;
    int m_reported = -1;
};

}  // namespace vireo
