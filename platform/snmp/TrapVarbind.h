#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace vireo {

/// The value of a varbind. Which type it holds says how it travels: a signed number as Integer32,
/// an unsigned one as Gauge32, also above 2^31, and a text, which may hold any bytes, as
/// OCTET STRING.
using TrapValue = std::variant<std::int32_t, std::uint32_t, std::string>;

/// The alternatives of `TrapValue`, in their order.
enum class TrapValueKind : std::uint8_t { eInteger32 = 0, eGauge32 = 1, eOctetString = 2 };

/// One object that a trap carries: its name and its value.
struct TrapVarbind {
    /// What follows the enterprise OID of the host's configuration, all of it: the enterprise
    /// 1.3.6.1.4.1.32473.1 and {1, 1, 7} are the object 1.3.6.1.4.1.32473.1.1.1.7. Nothing is
    /// appended to it, no instance either.
    std::vector<std::uint32_t> subIdentifiers;
    TrapValue value;

    TrapVarbind(std::vector<std::uint32_t> name, TrapValue content)
        : subIdentifiers(std::move(name)), value(std::move(content)) {}

    TrapValueKind kind() const { return static_cast<TrapValueKind>(value.index()); }
    bool operator==(const TrapVarbind&) const = default;
};

}  // namespace vireo
