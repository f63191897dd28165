#include "files/DownloadReporter.h"

#include <algorithm>
#include <utility>

#include "Boundary.h"
#include "LocalMgmtCallbackIfc.h"
#include "device/Storage.h"
#include "files/DownloadStatusItems.h"
#include "files/FileTypeCatalogue.h"
#include "files/FileValidator.h"
#include "files/ImageBurner.h"
#include "files/PhoneBusyState.h"
#include "files/SingleFileTypes.h"

namespace vireo {
namespace {

constexpr int kComplete = 100;
constexpr int kBurnt = 99;
constexpr int kFailed = -3;

}  // namespace

DownloadReporter::DownloadReporter(LocalMgmtIfc& items, CurrentDownload& current,
                                   FileValidator& validator, ImageBurner& burner,
                                   SingleFileTypes& singleFiles, RemoteProgress remote)
    : m_items(items),
      m_current(current),
      m_validator(validator),
      m_burner(burner),
      m_singleFiles(singleFiles),
      m_remote(std::move(remote)) {}

bool DownloadReporter::progressNotify(int percent) {
    const CurrentDownload::Phase phase = m_current.phase();
    const CurrentDownload::Facts facts = m_current.facts();
    if (facts.path.empty()) {
        VCMS_LOG(kLogError, "ProgressNotify: filepath cannot be empty");
        return false;
    }
    if (phase == CurrentDownload::Phase::eTransfer) {
        handleTransfer(std::min(percent, kComplete), facts);
    } else if (phase == CurrentDownload::Phase::eBurn) {
        handleBurn(std::min(percent, kBurnt), facts);
    }
    return phase != CurrentDownload::Phase::eNone;
}

void DownloadReporter::handleTransfer(int percent, const CurrentDownload::Facts& facts) {
    if (percent >= 0 && percent < kComplete) {
        tellAll(percent, facts);
        return;
    }
    m_current.beginEnd();
    bool isGood = false;
    // Whatever goes wrong here, the download ends.
    guardedCall("progressNotify", [&] {
        isGood = percent == kComplete && isAccepted(facts);
        int value = isGood || percent < 0 ? percent : kFailed;
        m_current.setProgress(value);
        m_remote(value);
        // The file may have gone while the subscriber was told.
        if (isGood && !isAccepted(facts)) {
            isGood = false;
            value = kFailed;
            m_remote(value);
        }
        if (isGood) {
            informCompletion(facts);
        } else {
            informProgress(value, facts);
        }
    });
    end(facts, isGood);
}

void DownloadReporter::handleBurn(int percent, const CurrentDownload::Facts& facts) {
    const bool isLast = percent < 0 || percent == kBurnt;
    if (isLast) {
        m_current.beginEnd();
        m_current.dismissCallback();
    }
    guardedCall("progressNotify", [&] { tellAll(percent, facts); });
    if (isLast) {
        m_current.endBurn();
    }
}

/// Whether the file passes its check. One that does not is gone then.
bool DownloadReporter::isAccepted(const CurrentDownload::Facts& facts) {
    const FileValidator::Verdict verdict = m_validator.check(facts.type, facts.path);
    if (verdict == FileValidator::Verdict::eUnusable) {
        guardedCall("deleteFile", [&] { Storage::deleteFile(facts.path); });
    }
    return verdict == FileValidator::Verdict::eAccepted;
}

void DownloadReporter::tellAll(int percent, const CurrentDownload::Facts& facts) {
    m_current.setProgress(percent);
    m_remote(percent);
    informProgress(percent, facts);
}

void DownloadReporter::informProgress(int value, const CurrentDownload::Facts& facts) {
    if (value < 0) {
        DownloadStatusItems::recordTimeAndStatus(m_items, DownloadStatusItems::kFailed, facts.type);
        m_current.dismissCallback();
    }
    m_current.setProgress(value);
    if (facts.callback != nullptr) {
        guarded("informDownloadProgress", false,
                [&] { return facts.callback->informDownloadProgress(value, facts.path); });
    }
}

void DownloadReporter::informCompletion(const CurrentDownload::Facts& facts) {
    const bool isImage = facts.type == LocalMgmtIfc::FILETYPE_SOFTWARE;
    DownloadStatusItems::recordTimeAndStatus(m_items, DownloadStatusItems::kSucceeded, facts.type);
    if (!isImage) {
        m_current.dismissCallback();
    }
    if (facts.callback != nullptr) {
        guarded("informDownloadCompletion", false,
                [&] { return facts.callback->informDownloadCompletion(facts.path); });
    }
    if (facts.isAwaited) {  // its caller does the rest
        VCMS_LOG(kLogDebug, "clear m_returnAfterDownloadComplete\n");
        return;
    }
    if (FileTypeCatalogue::isSingleFileType(facts.type)) {
        m_singleFiles.removeOldFileForSingleFileTypes(facts.type, facts.path);
    }
    if (isImage && m_current.tryBurn()) {
        VCMS_LOG(kLogDebug, "Software Bind downloaded Successfully. Starting Burn...\n");
        burn(facts);
    }
}

bool DownloadReporter::burn(const CurrentDownload::Facts& facts) {
    const bool isStarted =
        guarded("startImageBurn", false, [&] { return m_burner.startImageBurn(facts.path); });
    if (!isStarted) {
        m_current.beginEnd();
        guardedCall("startImageBurn", [&] {
            informProgress(kFailed, facts);
            m_remote(kFailed);
        });
        m_current.endBurn();
    }
    return isStarted;
}

void DownloadReporter::end(const CurrentDownload::Facts& facts, bool success) {
    // Deliberate: the text speaks of a failure whatever the outcome, and the mark goes also where
    // the download did not set it.
    VCMS_LOG(kLogInfo, "Clear Phone busy state of SOFTWARE_UPDATE due to transfer failure.");
    m_items.clearPhoneBusyStatus(kBusyWithSoftwareUpdate);
    if (!facts.isAwaited) {
        m_current.finish();
        return;
    }
    if (!success) {
        VCMS_LOG(kLogDebug, "failure clear m_returnAfterDownloadComplete");
    }
    m_current.deliver(success);
}

}  // namespace vireo
