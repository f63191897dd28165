#include "files/DownloadStarter.h"

#include <utility>

#include "Boundary.h"
#include "DownloadTags.h"
#include "LocalMgmtCallbackIfc.h"
#include "SemaphoreGuard.h"
#include "device/GPALAdmin.h"
#include "device/Storage.h"
#include "files/DownloadReporter.h"
#include "files/FileTypeCatalogue.h"
#include "files/FileValidator.h"
#include "files/PhoneBusyState.h"
#include "files/SingleFileTypes.h"
#include "items/RegistryHold.h"
#include "service/Executable.h"
#include "services/CertificateMgmtSvcIfc.h"

namespace vireo {
namespace {

constexpr int kSoftwareStorage = 1;

bool isSoftware(LocalMgmtIfc::eFiletype type) {
    return type == LocalMgmtIfc::FILETYPE_SOFTWARE;
}

std::string baseName(const std::string& path) {
    return path.substr(path.rfind('/') + 1);
}

}  // namespace

/// The claim to make the next download. It goes to the download or is given back.
class DownloadStarter::Claim {
public:
    explicit Claim(CurrentDownload& current) : m_current(current), m_isMine(current.tryClaim()) {
        if (!m_isMine) {
            VCMS_LOG(kLogWarning, "Download not allowed, a download is in progress\n");
        }
    }
    Claim(const Claim&) = delete;
    Claim& operator=(const Claim&) = delete;
    ~Claim() {
        if (m_isMine) {
            m_current.release();
        }
    }
    explicit operator bool() const { return m_isMine; }
    void passOn() { m_isMine = false; }

private:
    CurrentDownload& m_current;
    bool m_isMine;
};

DownloadStarter::DownloadStarter(CurrentDownload& current, DownloadReporter& reporter,
                                 SingleFileTypes& singleFiles, Surroundings surroundings)
    : m_current(current),
      m_singleFiles(singleFiles),
      m_reporter(reporter),
      m_surroundings(std::move(surroundings)) {}

bool DownloadStarter::startPlain(LocalMgmtIfc::eFiletype type) {
    VCMS_LOG(kLogDebug, "startDownload with filetype.");
    Claim claim(m_current);
    if (!claim) {
        return false;
    }
    m_surroundings.items.setPhoneBusyStatus(kBusyWithSoftwareUpdate);
    VCMS_LOG(kLogInfo, "Set phone busy state to SOFTWARE_UPDATE.");
    const bool isStarted =
        guarded("startDownload", false, [&] { return startFromSettings(claim, type, nullptr); });
    if (!isStarted) {
        VCMS_LOG(kLogInfo, "Clear Phone busy state of SOFTWARE_UPDATE due to transfer failure.");
        m_surroundings.items.clearPhoneBusyStatus(kBusyWithSoftwareUpdate);
    }
    return isStarted;
}

bool DownloadStarter::startFromSettings(LocalMgmtIfc::eFiletype type, Executable* callback) {
    Claim claim(m_current);
    return claim && startFromSettings(claim, type, callback);
}

bool DownloadStarter::startFrom(const DownloadSource& source, LocalMgmtIfc::eFiletype type,
                                Executable* callback, bool overrideBusy) {
    Claim claim(m_current);
    return claim && start(claim, source,
                          {.type = type,
                           .callback = dynamic_cast<LocalMgmtCallbackIfc*>(callback),
                           .overridesBusy = overrideBusy});
}

bool DownloadStarter::fetchFrom(const DownloadSource& source, LocalMgmtIfc::eFiletype type) {
    VCMS_LOG(kLogDebug, "startDownload With Many Params, no callback and blocking.");
    if (m_surroundings.registry.isMine()) {
        VCMS_LOG(kLogWarning, "Download not allowed, it would be waited for within a write");
        return false;
    }
    Claim claim(m_current);
    return claim && start(claim, source, {.type = type, .isAwaited = true});
}

bool DownloadStarter::startFromSettings(Claim& claim, LocalMgmtIfc::eFiletype type,
                                        Executable* callback) {
    VCMS_LOG(kLogDebug, "startDownload with filetype and callback");
    DownloadTags tags;
    if (!FileTypeCatalogue::getDownloadVcmsTags(type, tags)) {
        VCMS_LOG(kLogError, "Error getting download Tags. Download aborted.");
        return false;
    }
    DownloadData data;
    if (!DownloadSettings::loadDownloadData(m_surroundings.items, data, tags)) {
        VCMS_LOG(kLogError, "Error loading data. Download aborted.");
        return false;
    }
    return start(claim, DownloadSettings::sourceOf(data),
                 {.type = type, .callback = dynamic_cast<LocalMgmtCallbackIfc*>(callback)});
}

bool DownloadStarter::start(Claim& claim, const DownloadSource& source, const Order& order) {
    VCMS_LOG(kLogDebug, "startDownload With Many Params And Callback");
    if (isSoftware(order.type) && !order.overridesBusy &&
        (m_surroundings.items.retrievePhoneBusyStatus() & kBusyWithCall) != 0) {
        VCMS_LOG(kLogWarning, "Download not allowed, phone is busy\n");
        return false;
    }
    if (!downloadFile(source, order)) {
        return false;
    }
    claim.passOn();
    if (!order.isAwaited) {
        VCMS_LOG(kLogDebug, "startDownload: successfull.");
        return true;
    }
    VCMS_LOG(kLogDebug,
             "startDownload: successfull. Waiting for download to complete or fail before "
             "returning.");
    const bool isSuccess = m_current.await();
    const bool result = guarded("startDownload", false, [&] { return completeAwaited(isSuccess); });
    m_current.finish();
    return result;
}

/// What a caller that waits does after the end of the transfer.
bool DownloadStarter::completeAwaited(bool isSuccess) {
    const CurrentDownload::Facts facts = m_current.facts();
    if (isSoftware(facts.type)) {
        if (!isSuccess) {
            VCMS_LOG(kLogDebug, "Software Bind download failed.");
            return false;
        }
        if (!m_current.tryBurn()) {
            return true;
        }
        VCMS_LOG(kLogDebug, "Software Bind downloaded Successfully. Starting Burn...");
        return m_reporter.burn(facts);
    }
    if (!isSuccess) {
        VCMS_LOG(kLogDebug, "File download Failed.");
        return false;
    }
    VCMS_LOG(kLogDebug, "File downloaded Successfully.");
    if (FileTypeCatalogue::isSingleFileType(facts.type)) {
        m_singleFiles.removeOldFileForSingleFileTypes(facts.type, facts.path);
    }
    return true;
}

bool DownloadStarter::downloadFile(const DownloadSource& source, const Order& order) {
    const SemaphoreGuard lock(m_current.setUpLock());
    const bool result =
        guarded("unknown exception caught", false, [&] { return setUp(source, order); });
    if (!result) {
        m_current.cancel();
    }
    return result;
}

bool DownloadStarter::setUp(const DownloadSource& source, const Order& order) {
    std::string path;
    if (!FileTypeCatalogue::appendDirectory(path, m_surroundings.currentUser(), order.type) ||
        !prepareTransport(source.protocol)) {
        return false;
    }
    const std::string name = baseName(source.fileName);
    if (!FileValidator::isFileName(name)) {
        VCMS_LOG(kLogError, "\"%s\" names no file to download", source.fileName.c_str());
        return false;
    }
    path += name;
    Storage::initStorageLocation(path, isSoftware(order.type) ? kSoftwareStorage : 0, false);
    m_current.begin({order.type, path, order.callback, order.isAwaited});
    return GPALAdmin::getFile(
        {.transport = source.protocol == LocalMgmtIfc::DOWNLOAD_HTTPS ? TransportType::eHttps
                                                                      : TransportType::eFtp,
         .server = source.server,
         .port = source.port,
         .userName = source.userName,
         .password = source.password,
         .sourcePath = source.sourcePath,
         .fileName = source.fileName,
         .localPath = path},
        m_surroundings.progress);
}

bool DownloadStarter::prepareTransport(LocalMgmtIfc::eDownloadProtocol protocol) const {
    if (protocol == LocalMgmtIfc::DOWNLOAD_FTP) {
        return true;
    }
    if (protocol != LocalMgmtIfc::DOWNLOAD_HTTPS) {
        VCMS_LOG(kLogError, "Download protocol %d not supported", static_cast<int>(protocol));
        return false;
    }
    CertificateMgmtSvcIfc* const certificates = m_surroundings.certificates();
    SecurityDetails details;
    if (certificates == nullptr || !certificates->getSecurityDetails(details)) {
        VCMS_LOG(kLogError, "No certificates to download over HTTPS with");
        return false;
    }
    return GPALAdmin::setSecurityDetails(details);
}

}  // namespace vireo
