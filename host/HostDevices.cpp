#include "HostDevices.h"

#include "Ports.h"
#include "runtime/ServiceRegistry.h"

namespace vireo {

HostDevices::HostDevices(const std::filesystem::path& root, const DeviceOptions& options)
    : m_storage(root, options.storageDirectory),
      m_image(root, options.flashDirectory, options.hardwareVariant),
      m_certificates(root / options.certificateDirectory) {}

void HostDevices::addTo(PlatformPorts& ports) {
    ports.storage = &m_storage;
    ports.image = &m_image;
}

void HostDevices::offer(ServiceRegistry& services) {
    services.add("CertificateMgmtSvcIfc", m_certificates);
    services.add("MobilityServiceIfc", m_mobility);
#ifdef VIREO_MEDIA
    services.add("MediaControlServiceIfc", m_media);
#endif
}

}  // namespace vireo
