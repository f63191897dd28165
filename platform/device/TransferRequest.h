#pragma once

#include <string>
#include <vector>

namespace vireo {

/// How the platform reaches a file server.
enum class TransportType { eFtp, eHttps };

/// One file to be fetched. Texts are as an administrator types them: nothing is encoded, but for a
/// base address, which is a URL.
struct TransferRequest {
    TransportType transport = TransportType::eFtp;
    /// Name or address. Or a base address such as "https://host:port/path", which brings the port
    /// and the beginning of the path.
    std::string server;
    std::string port;      ///< empty: the usual one, 21 or 443; not used with a base address
    std::string userName;  ///< empty: nobody in particular
    std::string password;
    std::string sourcePath;  ///< directory on the server; FTP: from "/" or from the login directory
    std::string fileName;    ///< in that directory; may itself begin with directories
    std::string localPath;   ///< absolute; where the file is to appear when it is complete
};

/// How a server has to prove who it is.
struct CertificateVerificationPolicy {
    bool verifiesPeer = true;  ///< its certificate leads to a known authority
    bool verifiesHost = true;  ///< and bears the name by which it was called
};

/// One certificate or key, in PEM form.
struct SecurityCertificate {
    enum eKind { eAuthority, eClientCertificate, eClientKey };

    eKind kind = eAuthority;
    std::string pem;
};

/// All that a secure transfer needs.
struct SecurityDetails {
    CertificateVerificationPolicy policy;
    std::vector<SecurityCertificate> certificates;
};

}  // namespace vireo
