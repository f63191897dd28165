#pragma once

#include <memory>
#include <string>
#include <vector>

#include "support/ChildProcess.h"
#include "support/TemporaryDirectory.h"

namespace vireo::test {

/// A real HTTPS server on the loopback with certificates of its own authority, one port for each
/// way in which it can prove who it is. "/locked/" is for user "a@b" with password "p/w:#",
/// "/moved/" leads to the files, "/away/" to a server without encryption, "/held/" goes on at one
/// byte a second after 3 MiB. Ends with the object.
class HttpsServer {
public:
    enum ePort { eGood, eWrongHost, eExpired, eWantsClient, ePorts };

    /// Whether this machine has the server program and what makes certificates.
    static bool isInstalled();

    /// Serves the files below `directory`.
    explicit HttpsServer(std::string directory);
    /// Ends it as a crash would, and starts it again on the same ports, without holding back.
    void restart();
    void kill() { m_process.reset(); }

    const std::string& port(ePort which) const { return m_ports[which]; }
    /// The text of "authority.pem", "stranger.pem", "client.pem" or "client.key".
    std::string certificate(const std::string& file) const;

private:
    void makeAuthority(const std::string& name) const;
    void makeCertificate(const std::string& name, const std::string& subjectName,
                         const std::string& days) const;
    void start(bool isHolding);
    std::string settings(bool isHolding) const;

    TemporaryDirectory m_own;
    std::string m_directory;
    std::vector<std::string> m_ports;
    std::unique_ptr<ChildProcess> m_process;
};

}  // namespace vireo::test
