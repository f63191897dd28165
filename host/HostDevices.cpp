#include "HostDevices.h"

#include <utility>

#include "Ports.h"
#include "files/FirstLinks.h"
#ifndef VIREO_TRANSFER
#include "files/PartialName.h"
#endif
#include "log/Log.h"
#include "runtime/ServiceRegistry.h"
#ifdef VIREO_IMAGE
#include "signature/ImageBurn.h"
#endif

namespace vireo {
namespace {

/// Whether the phone is this machine.
bool isMachine(const std::filesystem::path& root, const DeviceOptions& options) {
    std::error_code failure;
    const bool isRoot = std::filesystem::equivalent(root, "/", failure) && !failure;
    if (options.allowsDeviceCommands && !isRoot && loggingOnUni(kLogWarning)) {
        logAppUni("vireod", "./host/HostDevices", kLogWarning, __LINE__,
                  "allow-device-commands has no effect: the root is not \"/\"");
    }
    return options.allowsDeviceCommands && isRoot;
}

}  // namespace

HostDevices::HostDevices(const std::filesystem::path& root, const DeviceOptions& options,
                         DeviceReboot::Hooks reboot)
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
      m_certificates(root / options.certificateDirectory),
      m_isMachine(isMachine(root, options)),
      m_shell(root, m_isMachine),
      m_reboot(root, m_isMachine, std::move(reboot))
#ifdef VIREO_PASSWORDS
      ,
      m_passwords(PasswordDirectory(root, options.passwordDirectory))
#endif
#ifdef VIREO_TRANSFER
      ,
      m_transfer((root / options.storageDirectory).string(), options.transfer)
#endif
#ifdef VIREO_SNMP
      ,
      m_traps(root.string(), options.traps)
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
    ports.shell = &m_shell;
    ports.reboot = &m_reboot;
#ifdef VIREO_TRANSFER
    ports.transfer = &m_transfer;
#endif
#ifdef VIREO_SNMP
    ports.traps = &m_traps;
#endif
}

void HostDevices::provideFiles() {
    FirstLinks::make(m_storage);
}

void HostDevices::stop() {
#ifdef VIREO_TRANSFER
    m_transfer.stop();
#endif
#ifdef VIREO_SNMP
    m_traps.stop();
#endif
#ifdef VIREO_IMAGE
    m_image.stop();
#endif
}

void HostDevices::offer(ServiceRegistry& services) {
    services.add("CertificateMgmtSvcIfc", m_certificates);
    services.add("MobilityServiceIfc", m_mobility);
#ifdef VIREO_PASSWORDS
    services.add("PasswordMgmtSvcIfc", m_passwords);
#endif
#ifdef VIREO_MEDIA
    services.add("MediaControlServiceIfc", m_media);
#endif
}

}  // namespace vireo
