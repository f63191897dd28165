#pragma once

#include <optional>
#include <string>

#include "snmp/NetSnmp.h"

namespace vireo {

/// Somebody in whose name messages of version 3 are sent.
struct SnmpUser {
    std::string name;
    std::string authProtocol = "SHA-256";
    std::string authPassphrase;
    std::string privPassphrase;

    /// Puts the user and the keys into a session. Under the lock of `SnmpLibrary`. False, with a
    /// one-line `error`, when the library does not know the protocol.
    bool addTo(netsnmp_session& session, std::string& error) const;
};

/// The users of version 3: a `KeyValueFile` that only its owner may read. `user = NAME` begins
/// one; `auth` (SHA, SHA-256 or SHA-512), `auth-passphrase` and `priv-passphrase` follow. Messages
/// are signed, and ciphered with AES.
class SnmpUsers {
public:
    /// None, with a one-line `error`, when the file cannot be read or does not have the user.
    static std::optional<SnmpUser> find(const std::string& path, const std::string& name,
                                        std::string& error);
};

}  // namespace vireo
