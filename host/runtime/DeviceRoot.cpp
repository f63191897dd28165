#include "runtime/DeviceRoot.h"

#include "messages/PrivateDirectory.h"

namespace vireo {

std::optional<DeviceRoot> DeviceRoot::prepare(const std::filesystem::path& path,
                                              std::string& error) {
    std::string reason;
    std::optional<LockFile> lock;
    if (path.empty()) {
        reason = "the path is empty";
    } else if (PrivateDirectory::create(path, reason)) {
        lock = LockFile::acquireDirectory(path.string(), reason);
    }
    if (!lock) {
        error = "cannot use the device root \"" + path.string() + "\": " + reason;
        return std::nullopt;
    }
    return DeviceRoot(path, std::move(*lock));
}

}  // namespace vireo
