#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "snmp/NetSnmp.h"
#include "snmp/TrapOptions.h"
#include "snmp/TrapVarbind.h"

namespace vireo {

/// A sequence of sub-identifiers as the library has them.
using ObjectId = std::vector<oid>;

/// One trap, as it was raised.
struct TrapContent {
    static constexpr int kEnterpriseSpecific = 6;

    int generic = kEnterpriseSpecific;  ///< or 0 to 5
    int specific = 0;                   ///< the number of a trap of the phone's own
    std::vector<TrapVarbind> varbinds;
    std::uint32_t upTime = 0;  ///< hundredths of a second
};

/// What all traps of this phone have in common.
struct TrapOrigin {
    ObjectId enterprise;
    std::uint8_t agentAddress[4] = {};

    /// "1.3.6.1.4.1.32473.1"; false when the text is no such thing.
    static bool parseObjectId(const std::string& text, ObjectId& id);
};

/// Frees what the library has allocated.
struct FreePdu {
    void operator()(netsnmp_pdu* pdu) const { ::snmp_free_pdu(pdu); }
};
using PduPointer = std::unique_ptr<netsnmp_pdu, FreePdu>;

/// Puts traps into the form in which they are sent. Under the lock of `SnmpLibrary`.
class TrapMessage {
public:
    /// Null when the library cannot take it. A version 2c or 3 message carries the up-time and the
    /// trap's own identifier as its first two objects; `command` is that of a trap or an inform.
    static PduPointer makePdu(const TrapOrigin& origin, const TrapContent& content,
                              SnmpVersion version, int command);
    /// The datagram of a trap of version 1 or 2c; empty when it cannot be made.
    static std::string encode(const TrapOrigin& origin, const TrapContent& content,
                              SnmpVersion version, const std::string& community);
};

/// The datagram of a generic trap, made once: from one trap to the next only the up-time differs.
class TrapTemplate {
public:
    /// The datagram with this up-time; empty when it cannot be made.
    const std::string& at(std::uint32_t upTime, const TrapOrigin& origin, int generic,
                          SnmpVersion version, const std::string& community);

private:
    std::string m_bytes;
    std::size_t m_timeOffset = 0;
    std::size_t m_timeLength = 0;
};

}  // namespace vireo
