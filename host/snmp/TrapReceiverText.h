#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "snmp/TrapOptions.h"

namespace vireo {

/// A receiver as the settings have it: `HOST[:PORT] v1|v2c|v3 [inform] [user=NAME]`, HOST being an
/// address or a name as in the item, or `*` for any, and an IPv6 address with a port in brackets.
class TrapReceiverText {
public:
    /// None, with a one-line `error`, for anything else, and for what does not go together.
    static std::optional<ReceiverSettings> parse(std::string_view text, std::string& error);
};

/// The setting of the receiver at this place; the default if there is none.
ReceiverSettings findReceiver(const TrapOptions& options, const std::string& host,
                              const std::string& port);

/// A port as the items and settings have it; none when it is no number from 1 to 65535.
std::optional<unsigned short> parsePort(std::string_view text);

}  // namespace vireo
