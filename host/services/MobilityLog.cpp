#include "services/MobilityLog.h"

#include "log/Log.h"

namespace vireo {
namespace {

constexpr const char* kComponent = "MobilityLog";
constexpr const char* kFile = "./host/services/MobilityLog";

}  // namespace

void MobilityLog::pictureDownloaded(const std::string& fileName) {
    if (loggingOnUni(kLogInfo)) {
        logAppUni(kComponent, kFile, kLogInfo, __LINE__, "noted: the picture \"%s\" has come",
                  fileName.c_str());
    }
}

void MobilityLog::pictureDeleted(const std::string& fileName) {
    if (!loggingOnUni(kLogInfo)) {
        return;
    }
    if (fileName.empty()) {
        logAppUni(kComponent, kFile, kLogInfo, __LINE__, "noted: all pictures are gone");
    } else {
        logAppUni(kComponent, kFile, kLogInfo, __LINE__, "noted: the picture \"%s\" is gone",
                  fileName.c_str());
    }
}

void MobilityLog::refreshPictureClips() {
    if (loggingOnUni(kLogInfo)) {
        logAppUni(kComponent, kFile, kLogInfo, __LINE__,
                  "noted: the pictures of the phone book are to be read again");
    }
}

}  // namespace vireo
