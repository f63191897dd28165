#include "snmp/TrapMessage.h"

#include <charconv>
#include <cstdlib>
#include <cstring>
#include <string_view>

#include "snmp/BerCursor.h"
#include "snmp/SnmpLibrary.h"

namespace vireo {
namespace {

const ObjectId kUpTime{1, 3, 6, 1, 2, 1, 1, 3, 0};
const ObjectId kTrapIdentifier{1, 3, 6, 1, 6, 3, 1, 1, 4, 1, 0};
const ObjectId kGenericTraps{1, 3, 6, 1, 6, 3, 1, 1, 5};

bool add(netsnmp_pdu& pdu, const ObjectId& name, unsigned char type, const void* value,
         std::size_t size) {
    return ::snmp_pdu_add_variable(&pdu, name.data(), name.size(), type, value, size) != nullptr;
}

bool addVarbind(netsnmp_pdu& pdu, const TrapOrigin& origin, const TrapVarbind& varbind) {
    ObjectId name = origin.enterprise;
    name.insert(name.end(), varbind.subIdentifiers.begin(), varbind.subIdentifiers.end());
    if (name.size() > MAX_OID_LEN) {
        return false;
    }
    if (const auto* const number = std::get_if<std::int32_t>(&varbind.value)) {
        const long value = *number;
        return add(pdu, name, ASN_INTEGER, &value, sizeof value);
    }
    if (const auto* const number = std::get_if<std::uint32_t>(&varbind.value)) {
        const unsigned long value = *number;
        return add(pdu, name, ASN_GAUGE, &value, sizeof value);
    }
    const auto& text = std::get<std::string>(varbind.value);
    return add(pdu, name, ASN_OCTET_STR, text.data(), text.size());
}

/// What a trap is called since version 2: the enterprise's own ones have a 0 before their number.
ObjectId identifierOf(const TrapOrigin& origin, const TrapContent& content) {
    if (content.generic != TrapContent::kEnterpriseSpecific) {
        ObjectId identifier = kGenericTraps;
        identifier.push_back(static_cast<oid>(content.generic) + 1);
        return identifier;
    }
    ObjectId identifier = origin.enterprise;
    identifier.push_back(0);
    identifier.push_back(static_cast<std::uint32_t>(content.specific));
    return identifier;
}

bool fillVersion1(netsnmp_pdu& pdu, const TrapOrigin& origin, const TrapContent& content) {
    pdu.enterprise = ::snmp_duplicate_objid(origin.enterprise.data(), origin.enterprise.size());
    if (pdu.enterprise == nullptr) {
        return false;
    }
    pdu.enterprise_length = origin.enterprise.size();
    std::memcpy(pdu.agent_addr, origin.agentAddress, sizeof origin.agentAddress);
    pdu.trap_type = content.generic;
    pdu.specific_type = content.specific;
    pdu.time = content.upTime;
    return true;
}

bool fillVersion2(netsnmp_pdu& pdu, const TrapOrigin& origin, const TrapContent& content) {
    const unsigned long upTime = content.upTime;
    const ObjectId identifier = identifierOf(origin, content);
    return add(pdu, kUpTime, ASN_TIMETICKS, &upTime, sizeof upTime) &&
           add(pdu, kTrapIdentifier, ASN_OBJECT_ID, identifier.data(),
               identifier.size() * sizeof(oid));
}

/// As many bytes as a number takes that is never negative.
std::size_t lengthOf(std::uint32_t number) {
    std::size_t length = 1;
    while (length < 5 && (std::uint64_t{number} >> (8 * length - 1)) != 0) {
        ++length;
    }
    return length;
}

/// Where the up-time is in a datagram without objects of its own; false when it is not found.
bool findUpTime(std::string_view datagram, SnmpVersion version, std::size_t& offset,
                std::size_t& length) {
    // Version 1: version, community, PDU {enterprise, address, generic, specific, up-time, ...}.
    // Version 2c: version, community, PDU {request, error, index, {{name, up-time}, ...}}.
    BerCursor cursor(datagram);
    bool isFound = cursor.enter() && cursor.skip(2) && cursor.enter();
    if (version == SnmpVersion::eV1) {
        isFound = isFound && cursor.skip(4);
    } else {
        isFound = isFound && cursor.skip(3) && cursor.enter() && cursor.enter() && cursor.skip(1);
    }
    return isFound && cursor.tag() == ASN_TIMETICKS && cursor.content(offset, length);
}

}  // namespace

bool TrapOrigin::parseObjectId(const std::string& text, ObjectId& id) {
    ObjectId parsed;
    std::string_view rest = text;
    while (!rest.empty()) {
        std::uint32_t number = 0;
        const char* const end = rest.data() + rest.size();
        const auto [next, failure] = std::from_chars(rest.data(), end, number);
        const bool isLast = next == end;
        if (failure != std::errc() || (!isLast && (*next != '.' || next + 1 == end))) {
            return false;
        }
        parsed.push_back(number);
        rest.remove_prefix(static_cast<std::size_t>(next - rest.data()) + (isLast ? 0 : 1));
    }
    constexpr std::size_t kLongest = 60;  // leaves room for the objects below it
    const bool isEncodable = parsed.size() >= 2 && parsed.size() <= kLongest && parsed[0] <= 2 &&
                             (parsed[0] == 2 || parsed[1] < 40);
    if (isEncodable) {
        id = std::move(parsed);
    }
    return isEncodable;
}

PduPointer TrapMessage::makePdu(const TrapOrigin& origin, const TrapContent& content,
                                SnmpVersion version, int command) {
    PduPointer pdu(::snmp_pdu_create(command));
    if (!pdu || origin.enterprise.empty()) {
        return nullptr;
    }
    const bool isFirst = version == SnmpVersion::eV1;
    bool isFilled =
        isFirst ? fillVersion1(*pdu, origin, content) : fillVersion2(*pdu, origin, content);
    for (const TrapVarbind& varbind : content.varbinds) {
        isFilled = isFilled && addVarbind(*pdu, origin, varbind);
    }
    constexpr long kVersions[] = {SNMP_VERSION_1, SNMP_VERSION_2c, SNMP_VERSION_3};
    pdu->version = kVersions[static_cast<std::size_t>(version)];
    return isFilled ? std::move(pdu) : nullptr;
}

std::string TrapMessage::encode(const TrapOrigin& origin, const TrapContent& content,
                                SnmpVersion version, const std::string& community) {
    const PduPointer pdu = makePdu(origin, content, version,
                                   version == SnmpVersion::eV1 ? SNMP_MSG_TRAP : SNMP_MSG_TRAP2);
    if (!pdu) {
        return {};
    }
    netsnmp_session session{};
    ::snmp_sess_init(&session);
    session.version = pdu->version;
    std::string secret = community;  // the library takes a mutable one, and keeps it as it is
    session.community = reinterpret_cast<unsigned char*>(secret.data());
    session.community_len = secret.size();
    unsigned char* bytes = nullptr;
    std::size_t capacity = 0;
    std::size_t length = 0;
    // Encoded from its end, so the datagram is the last part of what was allocated.
    const bool isDone = ::snmp_build(&bytes, &capacity, &length, &session, pdu.get()) == 0;
    std::string datagram;
    if (isDone && bytes != nullptr) {
        datagram.assign(reinterpret_cast<const char*>(bytes) + capacity - length, length);
    }
    std::free(bytes);  // NOLINT(cppcoreguidelines-no-malloc): the library allocated it
    return datagram;
}

const std::string& TrapTemplate::at(std::uint32_t upTime, const TrapOrigin& origin, int generic,
                                    SnmpVersion version, const std::string& community) {
    const std::size_t length = lengthOf(upTime);
    if (m_bytes.empty() || length != m_timeLength) {
        TrapContent content;
        content.generic = generic;
        content.upTime = upTime;
        const SnmpLibrary::Lock lock = SnmpLibrary::lock();
        m_bytes = TrapMessage::encode(origin, content, version, community);
        if (!findUpTime(m_bytes, version, m_timeOffset, m_timeLength) || m_timeLength != length) {
            m_bytes.clear();
            return m_bytes;
        }
    }
    for (std::size_t i = 0; i < length; ++i) {
        const std::uint64_t shifted = std::uint64_t{upTime} >> (8 * (length - 1 - i));
        m_bytes[m_timeOffset + i] = static_cast<char>(static_cast<unsigned char>(shifted));
    }
    return m_bytes;
}

}  // namespace vireo
