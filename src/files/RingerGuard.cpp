#include "files/RingerGuard.h"

#include "LogMacros.h"
#include "data/ManageableData.h"
#include "data/XmlText.h"

namespace vireo {
namespace {

constexpr const char* kRingerItem = "ringer-audio-file";

std::string partOf(const ManageableData& record, const char* name) {
    std::string value;
    record.interogate(kRingerItem, name, value);
    return value;
}

std::string element(const char* name, const std::string& text) {
    std::string xml = std::string("<") + name + '>';
    XmlText::appendEscaped(xml, text);
    return xml + "</" + name + '>';
}

}  // namespace

bool RingerGuard::allowsDeletion(const std::string& fileName) {
    ManageableData record;
    record.setRootId(kRingerItem, nullptr);
    const DataNode ringer = m_items.getData(record) ? record.interogate(kRingerItem) : DataNode();
    if (!ringer) {
        VCMS_LOG(kLogError, "Get ringer-audio-file failed");
        return true;
    }
    VCMS_LOG(kLogDebug, "ringer status %s", ringer->value().c_str());
    if (partOf(record, "status") != "on" || partOf(record, "ringer-file") != fileName) {
        return true;
    }
    return switchOff(record);
}

bool RingerGuard::switchOff(const ManageableData& record) {
    if (write(record, "<status>off</status>" + element("identity", partOf(record, "identity")))) {
        VCMS_LOG(kLogDebug, "okay to delete ringer file");
        VCMS_LOG(kLogDebug, "turning ringer off");
        return true;
    }
    write(record, "<status>on</status>" + element("volume", partOf(record, "volume")));
    VCMS_LOG(kLogError, "Failed to delete ringer file as configured for distinctive ringing");
    return false;
}

/// Makes `xml` the item's value.
bool RingerGuard::write(const ManageableData& before, const std::string& xml) {
    ManageableData record(before);
    record.clearRejectReasons();
    return record.populate(kRingerItem, xml) && m_items.setData(record);
}

}  // namespace vireo
