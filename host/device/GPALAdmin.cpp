#include "device/GPALAdmin.h"

#include "Ports.h"
#include "device/DevicePorts.h"
#include "device/HardwareVersion.h"
#include "log/Log.h"

namespace vireo {
namespace {

/// Logs why something could not be done.
bool logged(bool result, int line, const std::string& error) {
    if (!result && loggingOnUni(kLogError)) {
        logAppUni("GPALAdmin", "./host/device/GPALAdmin", kLogError, line, "%s", error.c_str());
    }
    return result;
}

}  // namespace

bool GPALAdmin::setSecurityDetails(const SecurityDetails& details) {
    TransferPort* const transfer = installedPorts().transfer;
    if (transfer != nullptr) {
        transfer->setSecurityDetails(details);
    }
    return transfer != nullptr;
}

bool GPALAdmin::getFile(const TransferRequest& request, AdminProgressCallback& progress) {
    const PlatformPorts& ports = installedPorts();
    std::string error = "there is no file transfer";
    bool isStarted = false;
    if (ports.image != nullptr && ports.image->isActive()) {
        error = "no transfer of '" + request.fileName + "': a software image is being burnt";
    } else if (ports.transfer != nullptr) {
        isStarted = ports.transfer->getFile(request, progress, error);
    }
    return logged(isStarted, __LINE__, error);
}

bool GPALAdmin::isActive() {
    const PlatformPorts& ports = installedPorts();
    return (ports.transfer != nullptr && ports.transfer->isActive()) ||
           (ports.image != nullptr && ports.image->isActive());
}

void GPALAdmin::discardFiles(const std::string& directory) {
    if (TransferPort* const transfer = installedPorts().transfer) {
        transfer->discard(directory);
    }
}

bool GPALAdmin::verifyImageType(const std::string& path, const std::string& hardwareVariant) {
    ImagePort* const image = installedPorts().image;
    std::string error = "there is no place for software images";
    return logged(image != nullptr && image->verify(path, hardwareVariant, error), __LINE__, error);
}

bool GPALAdmin::imageBurn(const std::string& path, AdminProgressCallback& progress) {
    ImagePort* const image = installedPorts().image;
    std::string error = "there is no place for software images";
    return logged(image != nullptr && image->burn(path, progress, error), __LINE__, error);
}

bool GPALAdmin::rebootDevice() {
    RebootPort* const port = installedPorts().reboot;
    std::string error = "there is nothing to reboot";
    return logged(port != nullptr && port->reboot(error), __LINE__, error);
}

std::string HardwareVersion::getHWVariant() {
    ImagePort* const image = installedPorts().image;
    return image != nullptr ? image->hardwareVariant() : std::string();
}

}  // namespace vireo
