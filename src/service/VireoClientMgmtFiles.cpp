#include "Boundary.h"
#include "LocalMgmtCallbackIfc.h"
#include "device/MemoryInfo.h"
#include "device/Storage.h"
#include "files/FileTypeCatalogue.h"
#include "service/VireoClientMgmt.h"

// The part of the face that is about files.

namespace vireo {

int VireoClientMgmt::getFileTypeCountLimit(eFiletype type) {
    VCMS_LOG(kLogDebug, "getFileTypeCountLimit");
    return FileTypeCatalogue::row(type).countLimit;
}

int VireoClientMgmt::getFileTypeNameLimit(eFiletype type) {
    VCMS_LOG(kLogDebug, "getFileTypeNameLimit");
    return FileTypeCatalogue::row(type).nameLimit;
}

std::string VireoClientMgmt::getFileTypeMetadata(eFiletype /*type*/) {
    return {};
}

DownloadStarter::Surroundings VireoClientMgmt::downloadSurroundings() {
    return {.items = *this,
            .progress = *this,
            .registry = m_registry.semaphore(),
            .certificates = [this] { return m_directory.getCertificateMgmtSvcIfc(); },
            .currentUser = [this] { return m_areas.currentUser(); },
            .directoryLock = m_areas.directoryLock()};
}

bool VireoClientMgmt::getFilePathFromType(eFiletype type, std::string& path) {
    return getFilePathFromType(type, path, m_areas.currentUser());
}

bool VireoClientMgmt::getFilePathFromType(eFiletype type, std::string& path, eUsertype user) {
    VCMS_LOG(kLogDebug, "getFilePathFromType");
    return guarded("getFilePathFromType", false,
                   [&] { return FileTypeCatalogue::appendDirectory(path, user, type); });
}

bool VireoClientMgmt::validateFile(eFiletype type, const std::string& fileName) {
    return guarded("validateFile", false, [&] {
        return m_downloads.validator().validateFile(m_areas.currentUser(), type, fileName);
    });
}

UserFileAreas::Surroundings VireoClientMgmt::areaSurroundings() {
    return {.items = *this,
            .mobility = [this] { return m_directory.mobilityIfc(); },
            .softwareType = [this] { return getSoftwareType(); }};
}

bool VireoClientMgmt::getListOfFilesOfType(eFiletype type, std::list<std::string>* files) {
    return getListOfFilesOfType(type, files, m_areas.currentUser());
}

bool VireoClientMgmt::getListOfFilesOfType(eFiletype type, std::list<std::string>* files,
                                           eUsertype user) {
    return guarded("getListOfFilesOfType", false,
                   [&] { return m_areas.getListOfFilesOfType(type, files, user); });
}

bool VireoClientMgmt::deleteFile(eFiletype type, const std::string& name) {
    return guarded("deleteFile", false,
                   [&] { return m_areas.deleteFileForUserType(type, name, true); });
}

bool VireoClientMgmt::cleanupUserData(eFiletype type, eUsertype user) {
    return guarded("cleanupUserData", false,
                   [&] { return m_areas.cleanupUserData(type, user, false, false); });
}

bool VireoClientMgmt::changeCurrentUser(eUsertype user) {
    return guarded("changeCurrentUser", true, [&] { return m_areas.changeCurrentUser(user); });
}

bool VireoClientMgmt::clearMobileUserData() {
    return guarded("clearMobileUserData", true, [&] { return m_areas.clearMobileUserData(); });
}

bool VireoClientMgmt::getIDAndDisplayName(std::string& id, std::string& displayName) {
    // Deliberate: it succeeds also when the names could not be found out.
    guardedCall("getIDAndDisplayName", [&] { Storage::getStorageName(id, displayName); });
    return true;
}

bool VireoClientMgmt::getUserDataSpaceInfo(MemoryInfo& info) {
    return guarded("getUserDataSpaceInfo", false, [&] { return info.retrieveData(); });
}

bool VireoClientMgmt::startDownload(eFiletype type) {
    return guarded("startDownload", false, [&] { return m_downloads.starter().startPlain(type); });
}

bool VireoClientMgmt::startDownload(eFiletype type, Executable* callback) {
    return guarded("startDownload", false,
                   [&] { return m_downloads.starter().startFromSettings(type, callback); });
}

bool VireoClientMgmt::startDownload(eDownloadProtocol protocol, const std::string& port,
                                    const std::string& server, const std::string& userName,
                                    const std::string& password, eFiletype type,
                                    const std::string& sourcePath, const std::string& fileName) {
    return guarded("startDownload", false, [&] {
        return m_downloads.starter().fetchFrom(
            {protocol, port, server, userName, password, sourcePath, fileName}, type);
    });
}

bool VireoClientMgmt::startDownload(eDownloadProtocol protocol, const std::string& port,
                                    const std::string& server, const std::string& userName,
                                    const std::string& password, eFiletype type,
                                    const std::string& sourcePath, const std::string& fileName,
                                    Executable* callback, bool overrideBusy) {
    return guarded("startDownload", false, [&] {
        return m_downloads.starter().startFrom(
            {protocol, port, server, userName, password, sourcePath, fileName}, type, callback,
            overrideBusy);
    });
}

int VireoClientMgmt::requestCurrentDownloadStatus(eFiletype type, const std::string& fileName) {
    return guarded("requestCurrentDownloadStatus", -1,
                   [&] { return m_downloads.requestCurrentDownloadStatus(type, fileName); });
}

void VireoClientMgmt::refreshPictureClips() {
    guardedCall("refreshPictureClips", [&] { m_downloads.refreshPictureClips(); });
}

bool VireoClientMgmt::progressNotify(int percent) {
    return guarded("progressNotify", false, [&] { return m_downloads.progressNotify(percent); });
}

bool VireoClientMgmt::requestShutdown() {
    return guarded("requestShutdown", true, [&] { return m_downloads.requestShutdown(); });
}

void VireoClientMgmt::peerLeft(Executable& proxy) {
    guardedCall("peerLeft", [&] {
        if (const auto* const follower = dynamic_cast<LocalMgmtCallbackIfc*>(&proxy)) {
            m_downloads.forget(*follower);
        }
        if (const auto* const subscriber = dynamic_cast<RemoteMgmtCallbackIfc*>(&proxy)) {
            m_remoteSubscriber.forget(*subscriber);
        }
    });
}

void VireoClientMgmt::timerEvent(int timerId) {
    guardedCall("timerEvent", [&] {
        m_deploymentTimer.timerEvent(timerId, [this] { m_ownItems.fileDownloadTimeout(); });
    });
}

}  // namespace vireo
