#include "snmp/SNMPQOSTrapDataItem.h"

#include "TrapNumber.h"
#include "Utf8.h"
#include "service/Serializer.h"

namespace vireo {
namespace {

constexpr std::uint32_t kObjects = 1;
constexpr std::uint32_t kQualityReport = 1;

/// The front of the text that may be sent.
std::string_view sendable(std::string_view text) {
    std::size_t end = 0;
    std::uint32_t character = 0;
    if (text.size() <= SNMPQOSTrapDataItem::kLongestText) {
        return text;
    }
    for (std::size_t next = 0; Utf8::next(text, next, character);) {
        if (next > SNMPQOSTrapDataItem::kLongestText) {
            return text.substr(0, end);
        }
        end = next;
    }
    return text.substr(0, SNMPQOSTrapDataItem::kLongestText);
}

}  // namespace

void SNMPQOSTrapDataItem::appendVarbinds(std::vector<TrapVarbind>& varbinds) const {
    varbinds.reserve(varbinds.size() + kQosTrapRows.size());
    std::uint32_t number = 0;
    for (const QosTrapRow& row : kQosTrapRows) {
        TrapValue value = row.isText() ? TrapValue(std::string(sendable(fields.*row.text)))
                                       : TrapValue(fields.*row.number);
        varbinds.emplace_back(std::vector{kObjects, kQualityReport, ++number}, std::move(value));
    }
}

void SNMPQOSTrapDataItem::appendText(std::string& out) const {
    Serializer::serialize(out, static_cast<int>(kQosTrapRows.size()));
    for (const QosTrapRow& row : kQosTrapRows) {
        Serializer::serialize(out,
                              row.isText() ? fields.*row.text : std::to_string(fields.*row.number));
    }
}

bool SNMPQOSTrapDataItem::takeText(std::string_view& in) {
    std::string_view rest = in;
    int count = 0;
    if (!Serializer::deserialize(rest, count) || count != static_cast<int>(kQosTrapRows.size())) {
        return false;
    }
    QosTrapFields read;
    for (const QosTrapRow& row : kQosTrapRows) {
        std::string_view value;
        if (!Serializer::deserialize(rest, value)) {
            return false;
        }
        if (row.isText()) {
            read.*row.text = value;
        } else if (const auto number = trapNumber<std::uint32_t>(value)) {
            read.*row.number = *number;
        } else {
            return false;
        }
    }
    fields = std::move(read);
    in = rest;
    return true;
}

}  // namespace vireo
