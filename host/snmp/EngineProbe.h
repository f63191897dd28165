#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>

#include "snmp/TrapSocket.h"

namespace vireo {

/// Who a receiver of version 3 is, and its clock.
struct ReceiverEngine {
    std::string id;
    unsigned boots = 0;
    unsigned time = 0;  ///< seconds
};

/// Asks a receiver of version 3 who it is. Never waits for the answer, as the SNMP library does
/// when it asks. One thread at a time.
class EngineProbe {
public:
    /// Asks, also again. False, with a one-line `error`, when that is not possible.
    bool ask(const UdpAddress& address, std::string& error);
    /// Takes what has come; none when that is no answer. Does not wait.
    std::optional<ReceiverEngine> read();
    /// What to wait for.
    int descriptor() const { return m_socket.descriptor(); }

private:
    using Number = std::array<char, 4>;

    std::optional<ReceiverEngine> parse(std::string_view answer) const;

    TrapSocket m_socket;
    Number m_number{};  ///< of the question, as the answer repeats it
};

}  // namespace vireo
