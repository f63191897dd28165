#include "snmp/SnmpUsers.h"

#include <cstring>
#include <iterator>
#include <utility>
#include <vector>

#include "files/KeyValueFile.h"
#include "files/SmallFile.h"

namespace vireo {
namespace {

constexpr std::uintmax_t kLargestFile = std::uintmax_t{64} << 10U;
constexpr std::size_t kShortestPassphrase = 8;  // a shorter one makes no key

struct AuthProtocol {
    const char* name;
    const oid* id;
    std::size_t length;
};

const AuthProtocol kAuthProtocols[] = {
    {"SHA", usmHMACSHA1AuthProtocol, OID_LENGTH(usmHMACSHA1AuthProtocol)},
    {"SHA-256", usmHMAC192SHA256AuthProtocol, OID_LENGTH(usmHMAC192SHA256AuthProtocol)},
    {"SHA-512", usmHMAC384SHA512AuthProtocol, OID_LENGTH(usmHMAC384SHA512AuthProtocol)},
};

const AuthProtocol* findAuthProtocol(const std::string& name) {
    for (const AuthProtocol& each : kAuthProtocols) {
        if (name == each.name) {
            return &each;
        }
    }
    return nullptr;
}

bool makeKey(const AuthProtocol& hash, const std::string& passphrase, unsigned char* key,
             std::size_t& length) {
    std::string copy = passphrase;  // the library takes a mutable one
    return ::generate_Ku(hash.id, static_cast<unsigned>(hash.length),
                         reinterpret_cast<unsigned char*>(copy.data()), copy.size(), key,
                         &length) == SNMPERR_SUCCESS;
}

/// For texts that the session takes over and frees.
char* duplicate(const std::string& text) {
    return ::strdup(text.c_str());
}

oid* duplicate(const oid* id, std::size_t length) {
    return ::snmp_duplicate_objid(id, length);
}

bool take(std::vector<SnmpUser>& users, const std::string& key, const std::string& value,
          std::string& fault) {
    if (key == "user") {
        users.emplace_back().name = value;
        return true;
    }
    if (users.empty()) {
        fault = key + ": 'user = NAME' comes first";
        return false;
    }
    SnmpUser& user = users.back();
    if (key == "auth") {
        user.authProtocol = value;
        fault = findAuthProtocol(value) != nullptr ? "" : "auth: it is SHA, SHA-256 or SHA-512";
        return fault.empty();
    }
    std::string* const secret = key == "auth-passphrase"   ? &user.authPassphrase
                                : key == "priv-passphrase" ? &user.privPassphrase
                                                           : nullptr;
    if (secret == nullptr || value.size() < kShortestPassphrase) {
        fault = secret == nullptr ? "unknown key \"" + key + "\""
                                  : key + ": it has at least 8 characters";
        return false;
    }
    *secret = value;
    return true;
}

}  // namespace

bool SnmpUser::addTo(netsnmp_session& session, std::string& error) const {
    const AuthProtocol* const hash = findAuthProtocol(authProtocol);
    session.version = SNMP_VERSION_3;
    session.securityModel = SNMP_SEC_MODEL_USM;
    session.securityLevel = SNMP_SEC_LEVEL_AUTHPRIV;
    session.securityName = duplicate(name);
    session.securityNameLen = name.size();
    session.securityAuthKeyLen = sizeof session.securityAuthKey;
    session.securityPrivKeyLen = sizeof session.securityPrivKey;
    if (hash == nullptr ||
        !makeKey(*hash, authPassphrase, session.securityAuthKey, session.securityAuthKeyLen) ||
        !makeKey(*hash, privPassphrase, session.securityPrivKey, session.securityPrivKeyLen)) {
        error = "the SNMP library cannot make keys for the user '" + name + "'";
        return false;
    }
    session.securityAuthProto = duplicate(hash->id, hash->length);
    session.securityAuthProtoLen = hash->length;
    session.securityPrivProto = duplicate(usmAESPrivProtocol, OID_LENGTH(usmAESPrivProtocol));
    session.securityPrivProtoLen = OID_LENGTH(usmAESPrivProtocol);
    return true;
}

std::optional<SnmpUser> SnmpUsers::find(const std::string& path, const std::string& name,
                                        std::string& error) {
    std::string content;
    std::vector<SnmpUser> users;
    const bool isRead =
        SmallFile::read(path, kLargestFile, content, error, SmallFile::Readers::eOwnerAlone) &&
        KeyValueFile::read(
            path,
            [&users](const std::string& key, const std::string& value, std::string& fault) {
                return take(users, key, value, fault);
            },
            error);
    if (!isRead) {
        return std::nullopt;
    }
    for (SnmpUser& user : users) {
        if (user.name == name && !user.authPassphrase.empty() && !user.privPassphrase.empty()) {
            return std::move(user);
        }
    }
    error = path + " has no user '" + name + "' with both passphrases";
    return std::nullopt;
}

}  // namespace vireo
