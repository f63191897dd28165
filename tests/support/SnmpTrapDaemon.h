#pragma once

#include <chrono>
#include <filesystem>
#include <fstream>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "support/ChildProcess.h"
#include "support/Files.h"
#include "support/ProcessState.h"
#include "support/TemporaryDirectory.h"
#include "support/TrapReceiver.h"

namespace vireo::test {

/// A real snmptrapd on a loopback port that takes one community, and versions 2c and 3, too. Each
/// trap is a line `COMMUNITY-OR-USER ENTERPRISE GENERIC SPECIFIC | VARBINDS`, with numbers for
/// names unless MIBs are given. Ends with the object.
class SnmpTrapDaemon {
public:
    /// Whether this machine has it.
    static bool isInstalled() { return !program().empty(); }

    static constexpr const char* kIpv4 = "udp:127.0.0.1:";
    static constexpr const char* kIpv6 = "udp6:[::1]:";

    /// `settings`: further lines of its configuration file, such as users of version 3.
    /// `mibDirectories`: parted by colons; empty: no MIB is read. `transport`: with its address.
    explicit SnmpTrapDaemon(const std::string& community, const std::string& settings = {},
                            const std::string& mibDirectories = {},
                            const std::string& transport = kIpv4)
        : m_port(freeUdpPort()), m_mibDirectories(mibDirectories), m_place(transport + m_port) {
        std::ofstream(m_own.file("conf")) << "authCommunity log " << community << "\n"
                                          << settings << "\n";
        start();
    }

    /// Starts another one in its place. It has the same settings, and for version 3 it is another
    /// engine: they remember nothing. `meanwhile` is done while there is none.
    template <class Meanwhile>
    void replace(Meanwhile&& meanwhile) {
        m_process.reset();
        meanwhile();
        start();
    }

    const std::string& port() const { return m_port; }
    std::string logFile() const { return m_own.file("log"); }
    std::string text() const { return readFile(logFile()); }
    /// The lines of traps, as soon as there are so many; those that are there when they do not come
    /// in time.
    std::vector<std::string> lines(
        std::size_t count, std::chrono::milliseconds limit = std::chrono::seconds(10)) const {
        const auto end = std::chrono::steady_clock::now() + limit;
        std::vector<std::string> found = trapLines();
        while (found.size() < count && std::chrono::steady_clock::now() < end) {
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
            found = trapLines();
        }
        return found;
    }

private:
    void start() {
        std::vector<std::string> command = {"/usr/bin/env",
                                            "SNMP_PERSISTENT_DIR=" + m_own.path().string(),
                                            "MIBS=",
                                            program(),
                                            "-f",
                                            "-n",
                                            "-C",
                                            "-c",
                                            m_own.file("conf"),
                                            "-A",
                                            "-Lf",
                                            logFile(),
                                            "-F",
                                            "%P %N %w %q | %v\n"};
        if (m_mibDirectories.empty()) {
            command.insert(command.end(), {"-m", "", "-On"});
        } else {
            command.insert(command.end(), {"-M", m_mibDirectories, "-m", "ALL"});
        }
        command.push_back(m_place);
        const std::size_t before = text().size();
        m_process = std::make_unique<ChildProcess>(command);
        if (!eventually(
                [&] { return text().find("NET-SNMP version", before) != std::string::npos; })) {
            throw std::runtime_error("snmptrapd did not start");
        }
    }
    static std::string program() {
        for (const char* path : {"/usr/sbin/snmptrapd", "/usr/local/sbin/snmptrapd"}) {
            if (std::filesystem::exists(path)) {
                return path;
            }
        }
        return {};
    }
    std::vector<std::string> trapLines() const {
        std::vector<std::string> found;
        std::ifstream file(logFile());
        for (std::string line; std::getline(file, line);) {
            if (line.find(" | ") != std::string::npos) {
                found.push_back(line);
            }
        }
        return found;
    }

    TemporaryDirectory m_own;
    const std::string m_port;
    const std::string m_mibDirectories;
    const std::string m_place;
    std::unique_ptr<ChildProcess> m_process;
};

}  // namespace vireo::test
