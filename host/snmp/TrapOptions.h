#pragma once

#include <chrono>
#include <cstddef>
#include <string>
#include <vector>

namespace vireo {

enum class SnmpVersion { eV1, eV2c, eV3 };

/// How one receiver wants its traps.
struct ReceiverSettings {
    std::string host;  ///< as its item has it; "*": any
    std::string port;  ///< empty: any
    SnmpVersion version = SnmpVersion::eV1;
    bool isConfirmed = false;  ///< gets informs, and confirms each
    std::string user;          ///< of version 3
};

/// What traps say about this phone, and how they are sent.
struct TrapOptions {
    std::string enterprise = "1.3.6.1.4.1.32473.1";  ///< object identifier in front of all others
    std::string agentAddress;  ///< IPv4; empty: the one that the receiver is reached from
    std::vector<ReceiverSettings>
        receivers;  ///< the first that fits counts; none: version 1, a trap
    std::string userFile = "snmp-users.conf";  ///< below the root
    std::string engineFile = "snmp-engine";    ///< below the root
    std::chrono::milliseconds informTimeout{1000};
    int informRetries = 3;
    std::size_t queueLength = 256;  ///< traps that wait for one receiver
    std::chrono::milliseconds resolveTimeout{500};
    std::chrono::milliseconds resolveLife{300'000};  ///< how long a name's address holds
};

}  // namespace vireo
