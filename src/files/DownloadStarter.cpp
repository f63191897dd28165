#include "files/DownloadStarter.h"

#include <utility>

#include "Boundary.h"
#include "DownloadTags.h"
#include "LocalMgmtCallbackIfc.h"
#include "SemaphoreGuard.h"
#include "device/GPALAdmin.h"
#include "device/Storage.h"
#include "files/FileTypeCatalogue.h"
#include "files/FileValidator.h"
#include "files/ImageBurner.h"
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

DownloadStarter::DownloadStarter(CurrentDownload& current, ImageBurner& burner,
                                 Surroundings surroundings)
    : m_current(current), m_burner(burner), m_surroundings(std::move(surroundings)) {}

bool DownloadStarter::tryClaim() {
    if (m_current.tryClaim()) {
        return true;
    }
    VCMS_LOG(kLogWarning, "Download not allowed, a download is in progress\n");
    return false;
}

bool DownloadStarter::startPlain(LocalMgmtIfc::eFiletype type) {
    VCMS_LOG(kLogDebug, "startDownload with filetype.");
    if (!tryClaim()) {
        return false;
    }
    m_surroundings.items.setPhoneBusyStatus(kBusyWithSoftwareUpdate);
    VCMS_LOG(kLogInfo, "Set phone busy state to SOFTWARE_UPDATE.");
    if (startClaimedFromSettings(type, nullptr)) {
        return true;
    }
    VCMS_LOG(kLogInfo, "Clear Phone busy state of SOFTWARE_UPDATE due to transfer failure.");
    m_surroundings.items.clearPhoneBusyStatus(kBusyWithSoftwareUpdate);
    return false;
}

bool DownloadStarter::startFromSettings(LocalMgmtIfc::eFiletype type, Executable* callback) {
    return tryClaim() && startClaimedFromSettings(type, callback);
}

bool DownloadStarter::startFrom(const DownloadSource& source, LocalMgmtIfc::eFiletype type,
                                Executable* callback, bool overrideBusy) {
    return tryClaim() &&
           startClaimed(source, {.type = type,
                                 .callback = dynamic_cast<LocalMgmtCallbackIfc*>(callback),
                                 .overridesBusy = overrideBusy});
}

bool DownloadStarter::fetchFrom(const DownloadSource& source, LocalMgmtIfc::eFiletype type) {
    VCMS_LOG(kLogDebug, "startDownload With Many Params, no callback and blocking.");
    if (m_surroundings.registry.isMine()) {
        VCMS_LOG(kLogWarning, "Download not allowed, it would be waited for within a write");
        return false;
    }
    return tryClaim() && startClaimed(source, {.type = type, .isAwaited = true});
}

// From here on this has the claim; it goes to the download or is given back.

bool DownloadStarter::startClaimedFromSettings(LocalMgmtIfc::eFiletype type, Executable* callback) {
    VCMS_LOG(kLogDebug, "startDownload with filetype and callback");
    DownloadTags tags;
    DownloadData data;
    if (!FileTypeCatalogue::getDownloadVcmsTags(type, tags)) {
        VCMS_LOG(kLogError, "Error getting download Tags. Download aborted.");
    } else if (!DownloadSettings::loadDownloadData(m_surroundings.items, data, tags)) {
        VCMS_LOG(kLogError, "Error loading data. Download aborted.");
    } else {
        return startClaimed(
            DownloadSettings::sourceOf(data),
            {.type = type, .callback = dynamic_cast<LocalMgmtCallbackIfc*>(callback)});
    }
    m_current.release();
    return false;
}

bool DownloadStarter::startClaimed(const DownloadSource& source, const Order& order) {
    VCMS_LOG(kLogDebug, "startDownload With Many Params And Callback");
    if (isSoftware(order.type) && !order.overridesBusy &&
        (m_surroundings.items.retrievePhoneBusyStatus() & kBusyWithCall) != 0) {
        VCMS_LOG(kLogWarning, "Download not allowed, phone is busy\n");
        m_current.release();
        return false;
    }
    if (!downloadFile(source, order)) {
        m_current.release();
        return false;
    }
    if (!order.isAwaited) {
        VCMS_LOG(kLogDebug, "startDownload: successfull.");
        return true;
    }
    VCMS_LOG(kLogDebug,
             "startDownload: successfull. Waiting for download to complete or fail before "
             "returning.");
    return finishAwaited();
}

bool DownloadStarter::finishAwaited() {
    const bool isSuccess = m_current.await();
    const CurrentDownload::Facts facts = m_current.facts();
    bool result = isSuccess;
    if (isSoftware(facts.type)) {
        if (!isSuccess) {
            VCMS_LOG(kLogDebug, "Software Bind download failed.");
        } else if (m_current.tryBurn()) {
            VCMS_LOG(kLogDebug, "Software Bind downloaded Successfully. Starting Burn...");
            result = m_burner.startImageBurn(facts.path);
        }
    } else if (!isSuccess) {
        VCMS_LOG(kLogDebug, "File download Failed.");
    } else {
        VCMS_LOG(kLogDebug, "File downloaded Successfully.");
        if (FileTypeCatalogue::isSingleFileType(facts.type)) {
            SingleFileTypes::removeOldFileForSingleFileTypes(facts.type, facts.path);
        }
    }
    m_current.release();
    return result;
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

bool DownloadStarter::prepareTransport(LocalMgmtIfc::eDownloadProtocol protocol) {
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
