#include "files/FileManager.h"

#include "LogMacros.h"
#include "data/RejectionSpec.h"

namespace vireo {

FileManager::FileManager(LocalMgmtIfc& /*service*/) {}

bool FileManager::readFileManagerCache(const std::string& rootId, std::string& /*value*/) {
    VCMS_LOG(kLogWarning, "FileManager - no request stands for %s", rootId.c_str());
    return false;
}

bool FileManager::changeFileManagerCache(const std::string& rootId, const std::string& /*value*/,
                                         std::string& reason) {
    VCMS_LOG(kLogWarning, "FileManager - request %s refused", rootId.c_str());
    reason = RejectReasonsStrings::not_supported;
    return false;
}

void FileManager::fileDownloadTimeout() {
    VCMS_LOG(kLogWarning, "FileManager - the time is over, but nothing is being deployed");
}

bool FileManager::flushToCache(FileRequestStatuses& statuses) {
    statuses.clear();  // nothing was accepted, so nothing can fail
    return true;
}

}  // namespace vireo
