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
                                   RemoteProgress remote)
    : m_items(items),
      m_current(current),
      m_validator(validator),
      m_burner(burner),
      m_remote(std::move(remote)) {}

bool DownloadReporter::progressNotify(int percent) {
    const CurrentDownload::Facts facts = m_current.facts();
    if (facts.path.empty()) {
        VCMS_LOG(kLogError, "ProgressNotify: filepath cannot be empty");
        return false;
    }
    percent = std::min(percent, kComplete);
    if (percent == kComplete || percent < 0) {
        m_current.beginEnd();
    }
    int value = percent;
    if (percent == kComplete && !m_validator.validateFileWithPath(facts.type, facts.path)) {
        value = kFailed;
    }
    m_current.setProgress(value);
    m_remote(value);
    if (percent == kComplete) {
        informCompletion(facts);
    } else {
        informProgress(percent, facts);
        if (!m_current.isUnderWay()) {
            if (percent < 0 || percent == kBurnt) {
                m_current.endBurn();
            }
        } else if (percent < 0) {
            end(facts, false, false);
        }
    }
    return true;
}

void DownloadReporter::informProgress(int value, const CurrentDownload::Facts& facts) {
    if (value < 0) {
        DownloadStatusItems::recordTimeAndStatus(m_items, DownloadStatusItems::kFailed, facts.type);
    }
    m_current.setProgress(value);
    if (facts.callback != nullptr) {
        guarded("informDownloadProgress", false,
                [&] { return facts.callback->informDownloadProgress(value, facts.path); });
    }
}

void DownloadReporter::informCompletion(const CurrentDownload::Facts& facts) {
    const FileValidator::Verdict verdict = m_validator.check(facts.type, facts.path);
    bool isBurning = false;
    if (verdict == FileValidator::Verdict::eAccepted) {
        isBurning = succeed(facts);
    } else {
        if (verdict == FileValidator::Verdict::eUnusable) {
            guardedCall("deleteFile", [&] { Storage::deleteFile(facts.path); });
        }
        informProgress(kFailed, facts);
    }
    end(facts, verdict == FileValidator::Verdict::eAccepted, isBurning);
}

/// Whether an image is being burnt now.
bool DownloadReporter::succeed(const CurrentDownload::Facts& facts) {
    DownloadStatusItems::recordTimeAndStatus(m_items, DownloadStatusItems::kSucceeded, facts.type);
    if (facts.callback != nullptr) {
        guarded("informDownloadCompletion", false,
                [&] { return facts.callback->informDownloadCompletion(facts.path); });
    }
    m_current.setProgress(kComplete);
    if (!facts.isAwaited) {
        return actOnSuccess(facts);
    }
    VCMS_LOG(kLogDebug, "clear m_returnAfterDownloadComplete\n");
    return false;
}

/// What a caller that waits does itself.
bool DownloadReporter::actOnSuccess(const CurrentDownload::Facts& facts) {
    if (FileTypeCatalogue::isSingleFileType(facts.type)) {
        SingleFileTypes::removeOldFileForSingleFileTypes(facts.type, facts.path);
    }
    if (facts.type != LocalMgmtIfc::FILETYPE_SOFTWARE || !m_current.tryBurn()) {
        return false;
    }
    VCMS_LOG(kLogDebug, "Software Bind downloaded Successfully. Starting Burn...\n");
    if (m_burner.startImageBurn(facts.path)) {
        return true;
    }
    informProgress(kFailed, facts);
    m_remote(kFailed);
    return false;
}

void DownloadReporter::end(const CurrentDownload::Facts& facts, bool success, bool isBurning) {
    // Deliberate: the text speaks of a failure whatever the outcome, and the mark goes also where
    // the download did not set it.
    VCMS_LOG(kLogInfo, "Clear Phone busy state of SOFTWARE_UPDATE due to transfer failure.");
    m_items.clearPhoneBusyStatus(kBusyWithSoftwareUpdate);
    m_current.endTransfer();
    if (!facts.isAwaited) {
        m_current.finish(isBurning);
        return;
    }
    if (!success) {
        VCMS_LOG(kLogDebug, "failure clear m_returnAfterDownloadComplete");
    }
    m_current.deliver(success);
}

}  // namespace vireo
