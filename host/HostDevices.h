#pragma once

#include <filesystem>

#include "DeviceOptions.h"
#include "files/FileStorage.h"
#include "image/PlainImage.h"
#include "services/CertificateDirectory.h"
#include "services/MobilityLog.h"
#ifdef VIREO_MEDIA
#include "services/SndfileMediaControl.h"
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
    HostDevices(const std::filesystem::path& root, const DeviceOptions& options);

    /// Adds the ports that are made here to others.
    void addTo(PlatformPorts& ports);
    /// Makes the services known by their interfaces.
    void offer(ServiceRegistry& services);
    /// Ends what runs in the background; who waits for it is told that it failed. Nothing is begun
    /// after this.
    void stop();

private:
    FileStorage m_storage;
    PlainImage m_image;
    CertificateDirectory m_certificates;
    MobilityLog m_mobility;
#ifdef VIREO_MEDIA
    SndfileMediaControl m_media;
#endif
#ifdef VIREO_TRANSFER
    CurlTransfer m_transfer;
#endif
};

}  // namespace vireo
