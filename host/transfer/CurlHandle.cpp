#include "transfer/CurlHandle.h"

#include <sys/socket.h>

#include <algorithm>
#include <climits>

namespace vireo {
namespace {

constexpr long kReceiveBuffer = 512L * 1024;
constexpr long kMaximumRedirects = 5;

/// Sets options until one is refused.
class Options {
public:
    explicit Options(CURL* handle) : m_handle(handle) {}

    Options& number(CURLoption option, long value) { return set(option, value); }
    /// Null: the default of the library is switched off.
    Options& text(CURLoption option, const char* value) { return set(option, value); }
    Options& blob(CURLoption option, std::string value) {
        curl_blob copied{value.data(), value.size(), CURL_BLOB_COPY};
        return set(option, &copied);
    }
    template <class Value>
    Options& set(CURLoption option, Value value) {
        m_isGood = m_isGood && curl_easy_setopt(m_handle, option, value) == CURLE_OK;
        return *this;
    }
    bool isGood() const { return m_isGood; }

private:
    CURL* m_handle;
    bool m_isGood = true;
};

/// Sockets that commands which the phone runs meanwhile do not inherit.
curl_socket_t openSocket(void* /*context*/, curlsocktype /*purpose*/, curl_sockaddr* address) {
    return ::socket(address->family, address->socktype | SOCK_CLOEXEC, address->protocol);
}

std::string allOf(const SecurityDetails& details, SecurityCertificate::eKind kind) {
    std::string pem;
    for (const SecurityCertificate& certificate : details.certificates) {
        if (certificate.kind == kind) {
            pem += certificate.pem + "\n";
        }
    }
    return pem;
}

/// Seconds, at least one, for what the library counts by itself.
long seconds(std::chrono::milliseconds time) {
    const auto whole = std::chrono::ceil<std::chrono::seconds>(time).count();
    return static_cast<long>(std::clamp<long long>(whole, 1, INT_MAX / 1000));
}

void setGeneral(Options& options, const TransferRequest& request, const SourceUrl& source) {
    options.text(CURLOPT_URL, source.url.c_str())
        .number(CURLOPT_PATH_AS_IS, 1)
        .number(CURLOPT_BUFFERSIZE, kReceiveBuffer)
        .text(CURLOPT_PROXY, "")
        .number(CURLOPT_NETRC, CURL_NETRC_IGNORED)
        .number(CURLOPT_NOSIGNAL, 1)
        .number(CURLOPT_QUICK_EXIT, 1)  // do not wait for a name server that is silent
        .number(CURLOPT_FORBID_REUSE, 1)
        .number(CURLOPT_FAILONERROR, 1)
        .number(CURLOPT_FILETIME, 1)
        // It would count the login in; the caller has a clock of its own.
        .number(CURLOPT_CONNECTTIMEOUT_MS, INT_MAX)
        .set(CURLOPT_OPENSOCKETFUNCTION, &openSocket);
    if (!request.userName.empty()) {
        options.text(CURLOPT_USERNAME, request.userName.c_str())
            .text(CURLOPT_PASSWORD, request.password.c_str());
    }
}

void setFtp(Options& options, const TransferOptions& wanted) {
    options
        .text(CURLOPT_PROTOCOLS_STR, "ftp")
        // In case that the caller's clock is not asked; it is first otherwise.
        .number(CURLOPT_SERVER_RESPONSE_TIMEOUT, 2 * seconds(wanted.stallTimeout))
        .number(CURLOPT_ACCEPTTIMEOUT_MS, seconds(wanted.connectTimeout) * 1000);
    if (wanted.usesActiveFtp) {
        options.text(CURLOPT_FTPPORT, "-");
    }
}

void setHttps(Options& options) {
    options.text(CURLOPT_PROTOCOLS_STR, "https")
        .text(CURLOPT_REDIR_PROTOCOLS_STR, "https")
        .number(CURLOPT_FOLLOWLOCATION, 1)
        .number(CURLOPT_MAXREDIRS, kMaximumRedirects)
        .number(CURLOPT_HTTP_VERSION, CURL_HTTP_VERSION_1_1)
        .number(CURLOPT_HTTPAUTH, static_cast<long>(CURLAUTH_BASIC | CURLAUTH_DIGEST))
        .number(CURLOPT_SSLVERSION, CURL_SSLVERSION_TLSv1_2);
}

}  // namespace

bool startCurl() {
    static const bool isStarted = curl_global_init(CURL_GLOBAL_DEFAULT) == CURLE_OK;
    return isStarted;
}

CurlHandle makeHandle(const TransferRequest& request, const SourceUrl& source,
                      const TransferOptions& options) {
    CurlHandle handle(startCurl() ? curl_easy_init() : nullptr);
    if (!handle) {
        return nullptr;
    }
    Options set(handle.get());
    setGeneral(set, request, source);
    if (request.transport == TransportType::eFtp) {
        setFtp(set, options);
    } else {
        setHttps(set);
    }
    return set.isGood() ? std::move(handle) : nullptr;
}

bool secure(CURL* handle, const SecurityDetails& details) {
    Options set(handle);
    set.number(CURLOPT_SSL_VERIFYPEER, details.policy.verifiesPeer ? 1 : 0)
        .number(CURLOPT_SSL_VERIFYHOST, details.policy.verifiesHost ? 2 : 0)
        // The authorities of the machine are not those of the phone.
        .text(CURLOPT_CAINFO, nullptr)
        .text(CURLOPT_CAPATH, nullptr);
    const struct {
        CURLoption option;
        SecurityCertificate::eKind kind;
    } blobs[] = {{CURLOPT_CAINFO_BLOB, SecurityCertificate::eAuthority},
                 {CURLOPT_SSLCERT_BLOB, SecurityCertificate::eClientCertificate},
                 {CURLOPT_SSLKEY_BLOB, SecurityCertificate::eClientKey}};
    for (const auto& [option, kind] : blobs) {
        const std::string pem = allOf(details, kind);
        if (!pem.empty()) {
            set.blob(option, pem);
        }
    }
    return set.isGood();
}

bool suffice(const SecurityDetails& details) {
    return !details.policy.verifiesPeer || !allOf(details, SecurityCertificate::eAuthority).empty();
}

}  // namespace vireo
