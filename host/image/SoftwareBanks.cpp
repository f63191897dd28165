#include "image/SoftwareBanks.h"

#include <exception>
#include <utility>

#include "log/Log.h"

namespace vireo {
namespace {

constexpr const char* kComponent = "SoftwareBanks";
constexpr const char* kFile = "./host/image/SoftwareBanks";

// Longer than any marker, shorter than what should be read into memory.
constexpr std::size_t kLongestMarker = 256;

void logLine(int level, int line, const std::string& text) {
    if (loggingOnUni(level)) {
        logAppUni(kComponent, kFile, level, line, "%s", text.c_str());
    }
}

/// What has run well, as far as anything is known of it.
Bank provenBank(const SoftwareBanks::View& view) {
    return view.running != Bank::eNone ? view.running
           : view.marker.isTrial       ? view.marker.fallback
                                       : view.marker.bank;
}

}  // namespace

SoftwareBanks::SoftwareBanks(FlashPort& flash, PayloadCheck check)
    : m_flash(flash), m_check(std::move(check)) {}

std::string SoftwareBanks::fileOf(Bank bank) {
    return bank == Bank::eB ? "bank-b.img" : "bank-a.img";
}

SoftwareBanks::View SoftwareBanks::view() const {
    const std::lock_guard lock(m_mutex);
    return m_view;
}

std::string SoftwareBanks::describe(Bank bank) const {
    if (bank == Bank::eNone) {
        return "the installed software";
    }
    const Content& content = m_view.of(bank);
    return std::string("bank ") + static_cast<char>(bank) +
           (content.header ? " (" + content.header->version.text() + ')' : "");
}

// -- the start ------------------------------------------------------------------------------------

void SoftwareBanks::start() {
    removeLeftovers();
    for (const Bank bank : {Bank::eA, Bank::eB}) {
        m_view.contents[bank == Bank::eB ? 1 : 0] = examine(bank);
        const std::string& fault = m_view.of(bank).fault;
        if (!fault.empty()) {
            logLine(kLogError, __LINE__,
                    "the image in " + describe(bank) + " is no good: " + fault);
        }
    }
    const BootMarker marker = load();
    if (marker.isTrial) {
        startTrial(marker);
    } else if (isWhole(marker.bank)) {
        run(marker.bank, marker);
    } else {
        startOther(marker);
    }
    logLine(kLogInfo, __LINE__, "started from " + describe(m_view.running));
}

void SoftwareBanks::removeLeftovers() {
    for (const std::string& name :
         {newFile(Bank::eA), newFile(Bank::eB), std::string(kNewMarkerFile)}) {
        try {
            m_flash.remove(name);
        } catch (const std::exception& exception) {
            logExc(kComponent, kFile, __LINE__, "a burn that was interrupted left a file",
                   exception);
        }
    }
}

SoftwareBanks::Content SoftwareBanks::examine(Bank bank) {
    Content content;
    try {
        const std::optional<FlashPort::File> opened = m_flash.open(fileOf(bank));
        if (opened) {
            const FlashFile file(m_flash, *opened);
            ImageHeader header;
            content.fault = findFault(file, header);
            if (content.fault.empty()) {
                content.header = header;
            }
        }
    } catch (const std::exception& exception) {
        content.fault = exception.what();
    }
    return content;
}

std::string SoftwareBanks::findFault(const FlashFile& file, ImageHeader& header) {
    const std::uint64_t size = m_flash.size(file.get());
    ImageHeader::Bytes bytes{};
    std::string reason;
    if (m_flash.read(file.get(), 0, bytes) != bytes.size()) {
        return "it has no header";
    }
    const auto decoded = ImageHeader::decode(bytes, reason);
    if (!decoded) {
        return reason;
    }
    if (decoded->fileSize() != size) {
        return "it has " + std::to_string(size) + " bytes instead of " +
               std::to_string(decoded->fileSize());
    }
    if (m_check && !m_check(m_flash, file.get(), *decoded)) {
        return "its payload is not that of its header";
    }
    header = *decoded;
    return {};
}

BootMarker SoftwareBanks::load() {
    try {
        const std::optional<FlashPort::File> opened = m_flash.open(kMarkerFile);
        if (!opened) {
            return recover("there is none");
        }
        const FlashFile file(m_flash, *opened);
        std::array<unsigned char, kLongestMarker> bytes{};
        const std::size_t count = m_flash.read(file.get(), 0, bytes);
        const auto marker = BootMarker::parse(
            std::string(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(count)));
        m_isMarkerStored = marker.has_value();
        return marker ? *marker : recover("it is damaged");
    } catch (const std::exception& exception) {
        return recover(exception.what());
    }
}

/// What the marker would say, from the banks alone. Of two the newer one is tried: if it does not
/// work, the other one is still there.
BootMarker SoftwareBanks::recover(const std::string& why) {
    BootMarker marker;
    const std::optional<ImageHeader>& a = m_view.of(Bank::eA).header;
    const std::optional<ImageHeader>& b = m_view.of(Bank::eB).header;
    if (!a && !b) {
        return marker;
    }
    marker.bank = a ? Bank::eA : Bank::eB;
    if (a && b) {
        marker.bank = b->version > a->version ? Bank::eB : Bank::eA;
        marker.isTrial = true;
        marker.fallback = otherBank(marker.bank);
    }
    logLine(kLogWarning, __LINE__,
            "the boot marker cannot be used: " + why + "; going on with " + describe(marker.bank));
    if (!marker.isTrial) {
        tryStore(marker, "the boot marker is not repaired");
    }
    return marker;
}

bool SoftwareBanks::isWhole(Bank bank) const {
    return bank == Bank::eNone || m_view.of(bank).header.has_value();
}

void SoftwareBanks::run(Bank bank, const BootMarker& marker) {
    const std::lock_guard lock(m_mutex);
    m_view.running = bank;
    m_view.marker = marker;
}

void SoftwareBanks::startTrial(const BootMarker& marker) {
    if (marker.starts >= kTrialStarts || !isWhole(marker.bank)) {
        goBack(marker);
        return;
    }
    BootMarker counted = marker;
    ++counted.starts;
    if (tryStore(counted, "the start of new software cannot be counted, so it is not started")) {
        logLine(kLogInfo, __LINE__, describe(marker.bank) + " is on trial");
        run(marker.bank, counted);
    } else {
        // Uncounted, a trial that fails would be repeated for ever.
        run(isWhole(marker.fallback) ? marker.fallback : marker.bank, marker);
    }
}

void SoftwareBanks::goBack(const BootMarker& marker) {
    if (!isWhole(marker.fallback)) {
        startOther(marker);
        return;
    }
    logLine(kLogError, __LINE__,
            describe(marker.bank) +
                (isWhole(marker.bank) ? " was started on trial and not confirmed" : " is damaged") +
                ": going back to " + describe(marker.fallback));
    BootMarker next;
    next.bank = marker.fallback;
    next.failed = marker.bank;
    tryStore(next, "the failed trial is not noted");
    run(next.bank, next);
}

/// The bank that should run, or be gone back to, is damaged.
void SoftwareBanks::startOther(const BootMarker& marker) {
    BootMarker next;
    next.failed = marker.isTrial ? marker.fallback : marker.bank;
    next.bank = otherBank(next.failed);
    if (!isWhole(next.bank)) {
        logLine(kLogError, __LINE__, "no bank holds software that is whole");
        run(Bank::eNone, marker);
        return;
    }
    logLine(kLogError, __LINE__,
            describe(next.failed) + " is damaged: going on with " + describe(next.bank));
    tryStore(next, "the damaged bank is not noted");
    run(next.bank, next);
}

// -- changes --------------------------------------------------------------------------------------

void SoftwareBanks::store(const BootMarker& marker) {
    {
        const std::string text = marker.text();
        const FlashFile file(m_flash, m_flash.create(kNewMarkerFile));
        m_flash.write(file.get(), 0,
                      std::span(reinterpret_cast<const unsigned char*>(text.data()), text.size()));
        m_flash.sync(file.get());
    }
    m_flash.rename(kNewMarkerFile, kMarkerFile);
    m_flash.syncNames();
    m_isMarkerStored = true;
}

bool SoftwareBanks::tryStore(const BootMarker& marker, const char* what) {
    try {
        store(marker);
        return true;
    } catch (const std::exception& exception) {
        logExc(kComponent, kFile, __LINE__, what, exception);
        return false;
    }
}

bool SoftwareBanks::confirm() {
    const std::lock_guard writing(m_writing);
    const View before = view();
    if (!before.isOnTrial()) {
        return true;
    }
    BootMarker confirmed;
    confirmed.bank = before.running;
    if (!tryStore(confirmed, "the software cannot be confirmed, the next start goes back")) {
        return false;
    }
    run(confirmed.bank, confirmed);
    logLine(kLogInfo, __LINE__, describe(confirmed.bank) + " is confirmed");
    if (m_listener) {
        m_listener();
    }
    return true;
}

std::optional<Bank> SoftwareBanks::target(std::string& reason) const {
    const View now = view();
    if (now.isOnTrial()) {
        reason = "the software that runs is on trial, and the other bank is the way back";
        return std::nullopt;
    }
    if (now.running != Bank::eNone) {
        return otherBank(now.running);
    }
    // A bank that cannot be read now may be one that can be later.
    return now.of(Bank::eA).isEmpty()   ? Bank::eA
           : now.of(Bank::eB).isEmpty() ? Bank::eB
                                        : otherBank(now.marker.bank);
}

void SoftwareBanks::install(Bank bank, const ImageHeader& header) {
    const std::lock_guard writing(m_writing);
    const View before = view();
    if (!m_isMarkerStored) {
        store(before.marker);  // or a start would find a bank alone, and take it for the phone's
    }
    m_flash.rename(newFile(bank), fileOf(bank));
    {
        const std::lock_guard lock(m_mutex);
        m_view.contents[bank == Bank::eB ? 1 : 0] = {header, {}};
    }
    m_flash.syncNames();
    BootMarker next;
    next.bank = bank;
    next.isTrial = true;
    const Bank proven = provenBank(before);
    next.fallback = proven != bank ? proven : Bank::eNone;
    try {
        store(next);
    } catch (const std::exception&) {
        // The new marker may have its name already; who was told of a failure expects the old one.
        tryStore(before.marker, "the boot marker is not put back");
        throw;
    }
    run(before.running, next);
    logLine(kLogInfo, __LINE__, "the next start is from " + describe(bank) + ", on trial");
    if (m_listener) {
        m_listener();
    }
}

}  // namespace vireo
