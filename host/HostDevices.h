#pragma once

#include <filesystem>

#include "files/FileStorage.h"
#include "image/FlashDirectory.h"
#include "image/SoftwareBanks.h"
#include "maintenance/DeviceReboot.h"
#include "maintenance/DeviceShell.h"
#include "options/DeviceOptions.h"
#include "services/CertificateDirectory.h"
#include "services/MobilityLog.h"
#include "services/SoftwareAgent.h"
#ifdef VIREO_IMAGE
#include "signature/SignedImages.h"
#else
#include "image/NoImages.h"
#endif
#ifdef VIREO_MEDIA
#include "services/SndfileMediaControl.h"
#endif
#ifdef VIREO_PASSWORDS
#include "passwords/PasswordService.h"
#endif
#ifdef VIREO_SNMP
#include "snmp/NetSnmpTraps.h"
#endif
#ifdef VIREO_TRANSFER
#include "transfer/CurlTransfer.h"
#endif

namespace vireo {

class ServiceRegistry;
struct PlatformPorts;

/// The parts of a running vireod that stand for the phone itself: its files, its flash memory, and
/// the services beside this one. They outlive the plug-in.
class HostDevices {
public:
    /// Decides which software this start is from, and counts it if that is on trial.
    HostDevices(const std::filesystem::path& root, const DeviceOptions& options,
                DeviceReboot::Hooks reboot);

    /// Adds the ports that are made here to others.
    void addTo(PlatformPorts& ports);
    /// Gives the phone's user the deployed files that are new. Before the service starts.
    void provideFiles();
    /// Makes the services known by their interfaces.
    void offer(ServiceRegistry& services);
    SoftwareBanks& banks() { return m_banks; }
    /// The owner of the items about the phone's software.
    SoftwareAgent& software() { return m_software; }
    /// Whether this process ends because the phone is rebooted.
    bool isRebooting() const { return m_reboot.isUnderWay(); }
    /// Ends what runs in the background; who waits for it is told that it failed. Nothing is begun
    /// after this.
    void stop();

private:
    FileStorage m_storage;
    FlashDirectory m_flash;
    SoftwareBanks m_banks;
    SoftwareAgent m_software{m_banks};
#ifdef VIREO_IMAGE
    SignedImages m_image;
#else
    NoImages m_image;
#endif
    CertificateDirectory m_certificates;
    MobilityLog m_mobility;
    const bool m_isMachine;  ///< what the phone stands for is this machine
    DeviceShell m_shell;
    DeviceReboot m_reboot;
#ifdef VIREO_PASSWORDS
    PasswordService m_passwords;
#endif
#ifdef VIREO_MEDIA
    SndfileMediaControl m_media;
#endif
#ifdef VIREO_TRANSFER
    CurlTransfer m_transfer;
#endif
#ifdef VIREO_SNMP
    NetSnmpTraps m_traps;
#endif
};

}  // namespace vireo
