#pragma once

#include <cstdint>
#include <string>

namespace vireo {

/// How this phone is known to receivers of version 3 traps. They take a trap only when the phone
/// was started more often than when it sent the one before, or is up for longer.
class SnmpEngine {
public:
    /// Counts this start in the file at `path`. An error that keeps it from being counted is left
    /// in `error`; the engine is usable nevertheless, until the next start.
    static SnmpEngine start(const std::string& path, std::string& error);

    /// 0x80007ed904 and the name of the machine, up to its first 27 bytes.
    const std::string& id() const { return m_id; }
    unsigned boots() const { return m_boots; }

private:
    SnmpEngine(std::string id, unsigned boots) : m_id(std::move(id)), m_boots(boots) {}

    std::string m_id;
    unsigned m_boots;
};

}  // namespace vireo
