#include "services/CertificateDirectory.h"

#include <algorithm>
#include <exception>
#include <set>
#include <system_error>
#include <vector>

#include "files/KeyValueFile.h"
#include "files/SmallFile.h"
#include "log/Log.h"

namespace vireo {
namespace {

constexpr const char* kComponent = "CertificateDirectory";
constexpr const char* kFile = "./host/services/CertificateDirectory";

constexpr const char* kCertificateMark = "-----BEGIN CERTIFICATE-----";
constexpr const char* kKeyMark = "PRIVATE KEY-----";

void logLine(int level, int line, const std::string& text) {
    if (loggingOnUni(level)) {
        logAppUni(kComponent, kFile, level, line, "%s", text.c_str());
    }
}

/// Reads one certificate or key; false after an error line.
bool readPem(const std::filesystem::path& path, SecurityCertificate::eKind kind,
             SecurityCertificate& certificate) {
    const bool isKey = kind == SecurityCertificate::eClientKey;
    std::string error;
    certificate.kind = kind;
    if (!SmallFile::read(path.string(), CertificateDirectory::kLargestFile, certificate.pem, error,
                         isKey ? SmallFile::Readers::eOwnerAlone : SmallFile::Readers::eAnybody)) {
        logLine(kLogError, __LINE__, error + "; it is not used");
        return false;
    }
    if (certificate.pem.find(isKey ? kKeyMark : kCertificateMark) == std::string::npos) {
        logLine(kLogError, __LINE__,
                path.string() + " holds no " + (isKey ? "private key" : "certificate") +
                    " in PEM form; it is not used");
        return false;
    }
    return true;
}

}  // namespace

bool CertificateDirectory::getSecurityDetails(SecurityDetails& details) {
    try {
        if (!std::filesystem::is_directory(m_directory)) {
            logLine(kLogError, __LINE__,
                    "there is no directory of certificates " + m_directory.string());
            return false;
        }
        SecurityDetails found;
        readPolicy(found.policy);
        readAuthorities(found);
        readOwn(found);
        details = std::move(found);
        return true;
    } catch (const std::exception& exception) {
        logExc(kComponent, kFile, __LINE__, "the certificates cannot be read", exception);
        return false;
    }
}

void CertificateDirectory::readPolicy(CertificateVerificationPolicy& policy) const {
    const std::filesystem::path path = m_directory / "policy.conf";
    if (!std::filesystem::exists(std::filesystem::symlink_status(path))) {
        return;
    }
    const CertificateVerificationPolicy strict;
    std::set<std::string> seen;
    const auto take = [&](const std::string& key, const std::string& value, std::string& fault) {
        bool* const verifies = key == "verify-peer"   ? &policy.verifiesPeer
                               : key == "verify-host" ? &policy.verifiesHost
                                                      : nullptr;
        if (verifies == nullptr) {
            fault = "unknown key \"" + key + "\"";
        } else if (!seen.insert(key).second) {
            fault = key + ": the key is there twice";
        } else if (value != "yes" && value != "no") {
            fault = key + ": \"" + value + "\" is neither yes nor no";
        } else {
            *verifies = value == "yes";
        }
        return fault.empty();
    };
    std::string error;
    if (!KeyValueFile::read(path.string(), take, error)) {
        policy = strict;
        logLine(kLogError, __LINE__, error + "; servers are verified in full");
    }
}

void CertificateDirectory::readAuthorities(SecurityDetails& details) const {
    const std::filesystem::path directory = m_directory / "authorities";
    std::vector<std::filesystem::path> files;
    std::error_code failure;
    for (std::filesystem::directory_iterator each(directory, failure), end; !failure && each != end;
         each.increment(failure)) {
        if (each->path().extension() == ".pem" &&
            !each->path().filename().string().starts_with('.')) {
            files.push_back(each->path());
        }
    }
    if (failure && failure != std::errc::no_such_file_or_directory) {
        logLine(kLogError, __LINE__,
                "cannot read " + directory.string() + ": " + failure.message());
    }
    std::sort(files.begin(), files.end());
    for (const std::filesystem::path& file : files) {
        SecurityCertificate certificate;
        if (readPem(file, SecurityCertificate::eAuthority, certificate)) {
            details.certificates.push_back(std::move(certificate));
        }
    }
    if (details.certificates.empty() && details.policy.verifiesPeer) {
        logLine(kLogWarning, __LINE__,
                "no authority is known in " + directory.string() + ": no server can be verified");
    }
}

void CertificateDirectory::readOwn(SecurityDetails& details) const {
    const std::filesystem::path certificateFile = m_directory / "client.pem";
    const std::filesystem::path keyFile = m_directory / "client-key.pem";
    const auto isThere = [](const std::filesystem::path& path) {
        return std::filesystem::exists(std::filesystem::symlink_status(path));
    };
    if (!isThere(certificateFile) && !isThere(keyFile)) {
        return;
    }
    // One without the other is of no use, and is named by the error line of the one that lacks.
    SecurityCertificate certificate;
    SecurityCertificate key;
    if (readPem(certificateFile, SecurityCertificate::eClientCertificate, certificate) &&
        readPem(keyFile, SecurityCertificate::eClientKey, key)) {
        details.certificates.push_back(std::move(certificate));
        details.certificates.push_back(std::move(key));
    }
}

}  // namespace vireo
