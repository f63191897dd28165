#pragma once

#include <array>
#include <functional>
#include <mutex>
#include <optional>
#include <string>

#include "image/BootMarker.h"
#include "image/FlashPort.h"
#include "image/ImageHeader.h"

namespace vireo {

/// The two banks of the phone's software, and which of them it runs from. New software is on trial:
/// started once, it has to be confirmed, or the next start goes back to what ran before. At every
/// moment, whatever fails, one bank is whole and a start finds it; the software that the phone was
/// installed with does where nothing was ever burnt.
///
/// `start` comes first, on one thread; the rest is safe from every thread. Nothing is thrown unless
/// it is said.
class SoftwareBanks {
public:
    /// Whether the payload in a bank is the one of its header. Throws a `StorageError` when it
    /// cannot be read.
    using PayloadCheck =
        std::function<bool(FlashPort& flash, FlashPort::File file, const ImageHeader& header)>;

    /// What a bank holds.
    struct Content {
        std::optional<ImageHeader> header;  ///< of an image that is whole
        std::string fault;                  ///< why it is none; empty: the bank is empty

        bool isEmpty() const { return !header && fault.empty(); }
    };
    /// Everything at one moment.
    struct View {
        Bank running = Bank::eNone;
        BootMarker marker;
        std::array<Content, 2> contents;

        const Content& of(Bank bank) const { return contents[bank == Bank::eB ? 1 : 0]; }
        bool isOnTrial() const { return marker.isTrial && running == marker.bank; }
    };

    /// How the trial is over when it was not confirmed: with the first start.
    static constexpr unsigned kTrialStarts = 1;

    /// Without a check, an image counts as whole when its length is that of its header. The flash
    /// memory outlives this.
    explicit SoftwareBanks(FlashPort& flash, PayloadCheck check = {});
    SoftwareBanks(const SoftwareBanks&) = delete;
    SoftwareBanks& operator=(const SoftwareBanks&) = delete;

    /// Decides which bank this start is from, and counts it if it is a trial; that is on stable
    /// storage then. Removes what an interrupted burn left. Before anything that may fail.
    void start();
    /// The start went well. False when that could not be written down, so that the next start goes
    /// back; true also when there is no trial.
    bool confirm();
    View view() const;
    /// Called after every change, on the thread that made it and without a lock held. Before the
    /// first other thread.
    void onChange(std::function<void()> listener) { m_listener = std::move(listener); }

    // For a burn; one at a time.

    /// The bank that the phone does not run from. Nothing, with a `reason`, while the software is
    /// on trial: the other bank is the way back then.
    std::optional<Bank> target(std::string& reason) const;
    /// Where the image for a bank is written, until it is complete.
    static std::string newFile(Bank bank) { return fileOf(bank) + ".new"; }
    /// Makes the complete and synchronized new file the bank's image and has the next start try it.
    /// Throws a `StorageError`; the next start is then from the bank that runs now, or, if it was
    /// the very last step that failed, may be from the new one.
    void install(Bank bank, const ImageHeader& header);

    static std::string fileOf(Bank bank);
    static constexpr const char* kMarkerFile = "boot";
    static constexpr const char* kNewMarkerFile = "boot.new";

private:
    void removeLeftovers();
    Content examine(Bank bank);
    std::string findFault(const FlashFile& file, ImageHeader& header);
    BootMarker load();
    BootMarker recover(const std::string& why);
    void store(const BootMarker& marker);
    bool tryStore(const BootMarker& marker, const char* what);
    bool isWhole(Bank bank) const;
    void run(Bank bank, const BootMarker& marker);
    void startTrial(const BootMarker& marker);
    void goBack(const BootMarker& marker);
    void startOther(const BootMarker& marker);
    std::string describe(Bank bank) const;

    FlashPort& m_flash;
    PayloadCheck m_check;
    std::function<void()> m_listener;
    std::mutex m_writing;           ///< one writes the marker
    bool m_isMarkerStored = false;  ///< there is one that can be read
    mutable std::mutex m_mutex;
    View m_view;
};

}  // namespace vireo
