#include "files/Downloads.h"

#include <utility>

#include "Boundary.h"
#include "LocalMgmtCallbackIfc.h"
#include "SemaphoreGuard.h"
#include "services/MobilityServiceIfc.h"

namespace vireo {

Downloads::Downloads(DownloadStarter::Surroundings surroundings, Services services)
    : m_mobility(services.mobility),
      m_validator(std::move(services.media), std::move(services.mobility)),
      m_burner(m_current, surroundings.progress),
      m_singleFiles(surroundings.directoryLock),
      m_reporter(surroundings.items, m_current, m_validator, m_burner, m_singleFiles,
                 std::move(services.remote)),
      m_starter(m_current, m_reporter, m_singleFiles, surroundings) {}

int Downloads::requestCurrentDownloadStatus(LocalMgmtIfc::eFiletype type,
                                            const std::string& fileName) const {
    const CurrentDownload::Facts facts = m_current.facts();
    const bool isMeant = !facts.path.empty() && facts.type == type &&
                         (fileName.empty() || facts.path.compare(facts.path.rfind('/') + 1,
                                                                 std::string::npos, fileName) == 0);
    return isMeant ? m_current.progress() : -1;
}

bool Downloads::requestShutdown() const {
    LocalMgmtCallbackIfc* const callback = m_current.facts().callback;
    return callback == nullptr ||
           guarded("requestShutdown", false, [&] { return callback->requestShutdown(); }) ||
           // It was told of the end meanwhile, or has left.
           m_current.facts().callback != callback;
}

void Downloads::refreshPictureClips() {
    const SemaphoreGuard lock(m_current.setUpLock());
    if (MobilityServiceIfc* const mobility = m_mobility()) {
        guardedCall("refreshPictureClips", [&] { mobility->refreshPictureClips(); });
    }
}

}  // namespace vireo
