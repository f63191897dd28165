#include "HostDevices.h"

#include "Ports.h"
#include "files/FirstLinks.h"
#ifndef VIREO_TRANSFER
#include "files/PartialName.h"
#endif
#include "runtime/ServiceRegistry.h"
#ifdef VIREO_IMAGE
#include "signature/ImageBurn.h"
#endif

namespace vireo {

HostDevices::HostDevices(const std::filesystem::path& root, const DeviceOptions& options)
    : m_storage(root, options.storageDirectory),
      m_flash(root, options.flashDirectory),
#ifdef VIREO_IMAGE
      m_banks(m_flash, ImageBurn::isPayloadWhole),
      m_image(m_flash, m_banks,
              {options.hardwareVariant, root / options.keyDirectory, options.allowsDowngrade}),
#else
      m_banks(m_flash),
      m_image(options.hardwareVariant),
#endif
      m_certificates(root / options.certificateDirectory)
#ifdef VIREO_TRANSFER
      ,
      m_transfer((root / options.storageDirectory).string(), options.transfer)
#endif
{
    m_banks.start();
#ifndef VIREO_TRANSFER
    removePartialFiles((root / options.storageDirectory).string());
#endif
}

void HostDevices::addTo(PlatformPorts& ports) {
    ports.storage = &m_storage;
    ports.image = &m_image;
#ifdef VIREO_TRANSFER
    ports.transfer = &m_transfer;
#endif
}

void HostDevices::provideFiles() {
    FirstLinks::make(m_storage);
}

void HostDevices::stop() {
#ifdef VIREO_TRANSFER
    m_transfer.stop();
#endif
#ifdef VIREO_IMAGE
    m_image.stop();
#endif
}

void HostDevices::offer(ServiceRegistry& services) {
    services.add("CertificateMgmtSvcIfc", m_certificates);
    services.add("MobilityServiceIfc", m_mobility);
#ifdef VIREO_MEDIA
    services.add("MediaControlServiceIfc", m_media);
#endif
}

}  // namespace vireo
