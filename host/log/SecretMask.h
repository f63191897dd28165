#pragma once

#include <string>
#include <string_view>

#include "Visibility.h"

namespace vireo {

/// Takes secrets out of log lines. A secret is the value behind a name in which "password",
/// "passwd", "passphrase", "pwd" or "secret" stands, in any case, or "pin" as a word of its own: in
/// `name = value` and `name,value`, to the end of the line; in a message, the value of the
/// parameter; in a record, what the element of that name, or with an attribute of that value, has
/// inside. In an address it is what stands between user and host.
///
/// Deliberate: an address is known by its "://". Without it `user:password@host` looks the same as
/// `sip:user@host`, `Call-ID:id@host` or `12:30@place`, and a telephone's lines about calls would
/// lose what they tell.
///
/// Where a line does not say how far the secret goes, the rest of it is taken out. The value of a
/// store column comes in a line of its own without the name; it belongs to the line that the same
/// thread wrote before.
class VIREO_API SecretMask {
public:
    static constexpr std::string_view kInstead = "***";

    /// False when there is nothing to hide in `text`; else `masked` is what may be written. Linear
    /// in the length. Safe from every thread.
    static bool apply(std::string_view text, std::string& masked);
};

}  // namespace vireo
