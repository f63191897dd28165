#include "HostDevices.h"

#include "Ports.h"
#include "runtime/ServiceRegistry.h"

namespace vireo {

HostDevices::HostDevices(const std::filesystem::path& root, const DeviceOptions& options)
    : m_storage(root, options.storageDirectory),
      m_image(root, options.flashDirectory, options.hardwareVariant),
      m_certificates(root / options.certificateDirectory)
#ifdef VIREO_TRANSFER
      ,
      m_transfer((root / options.storageDirectory).string(), options.transfer)
#endif
{
}

void HostDevices::addTo(PlatformPorts& ports) {
    ports.storage = &m_storage;
    ports.image = &m_image;
#ifdef VIREO_TRANSFER
    ports.transfer = &m_transfer;
#endif
}

void HostDevices::stop() {
#ifdef VIREO_TRANSFER
    m_transfer.stop();
#endif
    m_image.stop();
}

void HostDevices::offer(ServiceRegistry& services) {
    services.add("CertificateMgmtSvcIfc", m_certificates);
    services.add("MobilityServiceIfc", m_mobility);
#ifdef VIREO_MEDIA
    services.add("MediaControlServiceIfc", m_media);
#endif
}

}  // namespace vireo
