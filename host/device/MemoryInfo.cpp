#include "device/MemoryInfo.h"

#include "device/Storage.h"
#include "log/Log.h"

namespace vireo {

bool MemoryInfo::retrieveData() {
    try {
        const StorageSpace space = Storage::space();
        m_totalBytes = space.total;
        m_freeBytes = space.free;
        return true;
    } catch (const StorageError& error) {
        if (loggingOnUni(kLogError)) {
            logAppUni("MemoryInfo", "./host/device/MemoryInfo", kLogError, __LINE__, "%s",
                      error.what());
        }
        return false;
    }
}

}  // namespace vireo
