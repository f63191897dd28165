#pragma once

#include <filesystem>
#include <string>

#include "service/Executable.h"
#include "services/CertificateMgmtSvcIfc.h"

namespace vireo {

/// The certificates of the phone as files in PEM form below one directory: `authorities/*.pem` are
/// those of whom a server may come; `client.pem` and `client-key.pem`, both or none, are the
/// phone's own. `policy.conf` may hold `verify-peer = no` and `verify-host = no`. They are read
/// anew each time. What is wrong with a file gets an error line and is left out; a wrong policy is
/// the strict one.
class CertificateDirectory : public CertificateMgmtSvcIfc, public Executable {
public:
    static constexpr std::uintmax_t kLargestFile = 1U << 20U;

    /// It need not be there yet.
    explicit CertificateDirectory(std::filesystem::path directory)
        : m_directory(std::move(directory)) {}

    bool getSecurityDetails(SecurityDetails& details) override;

private:
    void readPolicy(CertificateVerificationPolicy& policy) const;
    void readAuthorities(SecurityDetails& details) const;
    void readOwn(SecurityDetails& details) const;

    std::filesystem::path m_directory;
};

}  // namespace vireo
