#include "files/ImageBurner.h"

#include "SemaphoreGuard.h"
#include "device/GPALAdmin.h"
#include "device/HardwareVersion.h"
#include "files/CurrentDownload.h"

namespace vireo {

bool ImageBurner::startImageBurn(const std::string& path) {
    const SemaphoreGuard lock(m_current.setUpLock());
    return GPALAdmin::verifyImageType(path, HardwareVersion::getHWVariant()) &&
           GPALAdmin::imageBurn(path, m_progress);
}

}  // namespace vireo
