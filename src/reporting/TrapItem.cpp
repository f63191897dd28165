#include "reporting/TrapItem.h"

#include "LocalMgmtIfc.h"
#include "LogMacros.h"
#include "data/ManageableData.h"

namespace vireo {

std::optional<std::string> TrapItem::read(LocalMgmtIfc* service, const char* tag) {
    ManageableData record;
    record.setRootId(tag, nullptr);
    std::string value;
    const bool isRead =
        service != nullptr && service->getData(record) && record.interogate(tag, tag, value);
    return isRead ? std::optional(std::move(value)) : std::nullopt;
}

std::string TrapItem::getValueFromVCMS(LocalMgmtIfc* service, const char* tag) {
    std::optional<std::string> value = read(service, tag);
    if (!value) {
        VCMS_LOG(kLogError, "getValueFromVCMS() failed for tag '%s'", tag);
    }
    return std::move(value).value_or(std::string());
}

}  // namespace vireo
