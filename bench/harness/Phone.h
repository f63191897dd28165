#pragma once

#include <memory>
#include <string>

#include "LocalMgmtClient.h"
#include "harness/PhoneConfiguration.h"
#include "harness/Process.h"
#include "harness/ScratchDirectory.h"

namespace vireo::bench {

/// Where the benchmark keeps things while it runs.
struct Places {
    std::string files;    ///< on a disk: stores and configurations
    std::string sockets;  ///< a short path
    std::string log;      ///< a file for what the programs say
};

/// A vireod of its own with a configuration made for it.
class Phone {
public:
    Phone(const Places& places, const PhoneConfiguration& configuration);

    const std::string& socket() const { return m_socket; }
    std::unique_ptr<LocalMgmtClient> connect(MgmtAgentIfc* agent = nullptr,
                                             const std::string& channel = "bench-*") const;
    double residentBytes() const { return bench::residentBytes(m_process.pid()); }

private:
    ScratchDirectory m_files;
    ScratchDirectory m_sockets;
    std::string m_socket;
    Process m_process;
};

/// The request that reads the items, in the default protocol.
std::string readRequest(const std::vector<std::string>& tags);
/// The request that writes `value` into each of the items.
std::string writeRequest(const std::vector<std::string>& tags, const std::string& value);
/// Throws unless the payload is a reply whose result is true.
void requireDone(std::string_view reply);

/// A value of the given size; another letter makes another value.
inline std::string valueOf(char letter, std::size_t size = 200) {
    return std::string(size, letter);
}

/// Gives two requests by turns, so that each write changes the value.
class Alternating {
public:
    Alternating(const std::vector<std::string>& tags, std::size_t valueSize = 200)
        : m_requests{writeRequest(tags, valueOf('a', valueSize)),
                     writeRequest(tags, valueOf('b', valueSize))} {}
    const std::string& next() {
        m_isOdd = !m_isOdd;
        return m_requests[m_isOdd ? 1 : 0];
    }

private:
    std::string m_requests[2];
    bool m_isOdd = false;
};

}  // namespace vireo::bench
