#include "snmp/SNMPTrapData.h"

#include "service/Serializer.h"
#include "snmp/SNMPQOSTrapDataItem.h"
#include "snmp/SNMPVarbindTrapDataItem.h"

namespace vireo {
namespace {

using Items = std::vector<std::unique_ptr<SNMPTrapDataItem>>;

/// An empty item of the kind, null when there is no such kind.
std::unique_ptr<SNMPTrapDataItem> makeItem(std::string_view kindName) {
    if (kindName == SNMPQOSTrapDataItem::kKindName) {
        return std::make_unique<SNMPQOSTrapDataItem>();
    }
    if (kindName == SNMPVarbindTrapDataItem::kKindName) {
        return std::make_unique<SNMPVarbindTrapDataItem>();
    }
    return nullptr;
}

/// Reads `count` items; the count is a claim, so nothing is made before its text is there.
bool takeItems(std::string_view& in, int count, Items& items) {
    for (int i = 0; i < count; ++i) {
        std::string_view kindName;
        if (!Serializer::deserialize(in, kindName)) {
            return false;
        }
        std::unique_ptr<SNMPTrapDataItem> item = makeItem(kindName);
        if (!item || !item->takeText(in)) {
            return false;
        }
        items.push_back(std::move(item));
    }
    return true;
}

}  // namespace

void SNMPTrapData::addSNMPTrapDataItem(std::unique_ptr<SNMPTrapDataItem> item) {
    if (item) {
        m_items.push_back(std::move(item));
    }
}

std::vector<TrapVarbind> SNMPTrapData::varbinds() const {
    std::vector<TrapVarbind> all;
    for (const auto& item : m_items) {
        item->appendVarbinds(all);
    }
    return all;
}

std::string SNMPTrapData::serialize() const {
    std::string out;
    Serializer::serialize(out, m_specificTrapNo);
    Serializer::serialize(out, static_cast<int>(m_items.size()));
    for (const auto& item : m_items) {
        Serializer::serialize(out, item->kindName());
        item->appendText(out);
    }
    return out;
}

bool SNMPTrapData::deserialize(const std::string& text) {
    std::string_view in = text;
    int number = 0;
    int count = 0;
    Items items;
    if (!Serializer::deserialize(in, number) || !Serializer::deserialize(in, count) || count < 0 ||
        !takeItems(in, count, items) || !in.empty()) {
        return false;
    }
    m_specificTrapNo = number;
    m_items = std::move(items);
    return true;
}

}  // namespace vireo
