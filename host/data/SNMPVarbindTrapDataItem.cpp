#include "snmp/SNMPVarbindTrapDataItem.h"

#include "TrapNumber.h"
#include "service/Serializer.h"

namespace vireo {
namespace {

constexpr int kTextsOfVarbind = 3;

std::string nameText(const std::vector<std::uint32_t>& subIdentifiers) {
    std::string text;
    for (const std::uint32_t subIdentifier : subIdentifiers) {
        text += text.empty() ? "" : ".";
        text += std::to_string(subIdentifier);
    }
    return text;
}

std::optional<std::vector<std::uint32_t>> nameFrom(std::string_view text) {
    std::vector<std::uint32_t> subIdentifiers;
    for (bool more = true; more;) {
        const std::size_t point = text.find('.');
        const auto number = trapNumber<std::uint32_t>(text.substr(0, point));
        if (!number || subIdentifiers.size() == SNMPVarbindTrapDataItem::kLongestName) {
            return std::nullopt;
        }
        subIdentifiers.push_back(*number);
        more = point != std::string_view::npos;
        text.remove_prefix(more ? point + 1 : text.size());
    }
    return subIdentifiers;
}

template <class Number>
std::optional<TrapValue> numberFrom(std::string_view text) {
    const auto number = trapNumber<Number>(text);
    return number ? std::optional<TrapValue>(*number) : std::nullopt;
}

std::optional<TrapValue> valueFrom(std::string_view kind, std::string_view text) {
    if (kind == "i") {
        return numberFrom<std::int32_t>(text);
    }
    if (kind == "g") {
        return numberFrom<std::uint32_t>(text);
    }
    return kind == "s" ? std::optional<TrapValue>(std::string(text)) : std::nullopt;
}

std::optional<TrapVarbind> takeVarbind(std::string_view& in) {
    std::string_view name;
    std::string_view kind;
    std::string_view text;
    if (!Serializer::deserialize(in, name) || !Serializer::deserialize(in, kind) ||
        !Serializer::deserialize(in, text)) {
        return std::nullopt;
    }
    auto subIdentifiers = nameFrom(name);
    auto value = valueFrom(kind, text);
    if (!subIdentifiers || !value) {
        return std::nullopt;
    }
    return TrapVarbind(std::move(*subIdentifiers), std::move(*value));
}

/// Writes kind and value.
struct ValueWriter {
    std::string& out;

    void operator()(std::int32_t number) const { write("i", std::to_string(number)); }
    void operator()(std::uint32_t number) const { write("g", std::to_string(number)); }
    void operator()(const std::string& text) const { write("s", text); }

    void write(std::string_view kind, const std::string& text) const {
        Serializer::serialize(out, kind);
        Serializer::serialize(out, text);
    }
};

}  // namespace

void SNMPVarbindTrapDataItem::add(std::vector<std::uint32_t> subIdentifiers, TrapValue value) {
    m_varbinds.emplace_back(std::move(subIdentifiers), std::move(value));
}

void SNMPVarbindTrapDataItem::appendVarbinds(std::vector<TrapVarbind>& varbinds) const {
    varbinds.insert(varbinds.end(), m_varbinds.begin(), m_varbinds.end());
}

void SNMPVarbindTrapDataItem::appendText(std::string& out) const {
    Serializer::serialize(out, static_cast<int>(m_varbinds.size()) * kTextsOfVarbind);
    for (const TrapVarbind& varbind : m_varbinds) {
        Serializer::serialize(out, nameText(varbind.subIdentifiers));
        std::visit(ValueWriter{out}, varbind.value);
    }
}

bool SNMPVarbindTrapDataItem::takeText(std::string_view& in) {
    std::string_view rest = in;
    int count = 0;
    if (!Serializer::deserialize(rest, count) || count < 0 || count % kTextsOfVarbind != 0) {
        return false;
    }
    std::vector<TrapVarbind> read;
    for (int i = 0; i < count; i += kTextsOfVarbind) {
        auto varbind = takeVarbind(rest);
        if (!varbind) {
            return false;
        }
        read.push_back(std::move(*varbind));
    }
    m_varbinds = std::move(read);
    in = rest;
    return true;
}

}  // namespace vireo
