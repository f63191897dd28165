#pragma once

#include <memory>
#include <string>

#include "support/ChildProcess.h"

namespace vireo::test {

/// A real FTP server on the loopback, for user "a@b" with password "p/w:#", who begins in "home" of
/// the directory. Ends with the object.
class FtpServer {
public:
    /// Whether this machine has the server program.
    static bool isInstalled() {
        return ChildProcess::run({kPython, "-c", "import pyftpdlib"}).exitCode == 0;
    }

    /// With a `gate`, a named pipe, it stops in the middle of each file after `hold` bytes, until
    /// somebody has opened the pipe for writing. An empty port: any free one.
    explicit FtpServer(const std::string& directory, const std::string& port = {}, long hold = 0,
                       const std::string& gate = {}) {
        std::vector<std::string> command = {kPython, VIREO_FTP_SERVER, directory,
                                            "a@b",   "p/w:#",          port.empty() ? "0" : port};
        if (!gate.empty()) {
            command.insert(command.end(), {std::to_string(hold), gate});
        }
        m_process = std::make_unique<ChildProcess>(command);
        m_process->readLine(m_port);
    }
    const std::string& port() const { return m_port; }

private:
    // The packages of the machine belong to its own interpreter.
    static constexpr const char* kPython = "/usr/bin/python3";

    std::unique_ptr<ChildProcess> m_process;
    std::string m_port;
};

}  // namespace vireo::test
