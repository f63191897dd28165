#include "transfer/TransferAttempt.h"

#include <algorithm>
#include <cstdlib>
#include <system_error>

namespace vireo {
namespace {

constexpr long kOk = 200;
constexpr long kPartialContent = 206;
constexpr long kRangeNotSatisfiable = 416;

std::string secondsText(std::chrono::milliseconds time) {
    const long long tenths = time.count() / 100;
    return std::to_string(tenths / 10) +
           (tenths % 10 != 0 ? "." + std::to_string(tenths % 10) : "") + " s";
}

/// What the library says too loosely for an administrator; empty for everything else.
const char* plainText(CURLcode code) {
    switch (code) {
        case CURLE_COULDNT_RESOLVE_HOST:
            return "unknown host";
        case CURLE_LOGIN_DENIED:
            return "user name or password refused";
        case CURLE_REMOTE_FILE_NOT_FOUND:
        case CURLE_FTP_COULDNT_RETR_FILE:
            return "no such file, or it may not be read";
        case CURLE_REMOTE_ACCESS_DENIED:
            return "no such directory, or it may not be entered";
        case CURLE_OUT_OF_MEMORY:
            return "out of memory";
        default:
            return "";
    }
}

}  // namespace

TransferAttempt::TransferAttempt(CurlHandle handle, TransportType transport,
                                 const TransferOptions& options, PartialFile& file,
                                 SourceVersion& version, TransferProgress& progress,
                                 const TransferStops& stops)
    : m_transport(transport),
      m_options(options),
      m_file(file),
      m_version(version),
      m_progress(progress),
      m_stops(stops),
      m_offset(file.size()),
      m_handle(std::move(handle)) {}

TransferAttempt::Ending TransferAttempt::run(CURLM* multi, std::string& error) {
    curl_slist* conditions = nullptr;
    if (m_offset > 0 && m_transport == TransportType::eHttps) {
        conditions = curl_slist_append(nullptr, ("If-Range: " + m_version.validator).c_str());
    }
    const std::unique_ptr<curl_slist, void (*)(curl_slist*)> owner(conditions,
                                                                   &curl_slist_free_all);
    curl_easy_setopt(m_handle.get(), CURLOPT_HTTPHEADER, conditions);
    if (!prepare()) {
        error = "out of memory";
        return Ending::eFailed;
    }
    m_lastSign = Clock::now();
    return end(perform(multi), error);
}

bool TransferAttempt::prepare() {
    CURLcode code = CURLE_OK;
    const auto set = [&](CURLoption option, auto value) {
        code = code == CURLE_OK ? curl_easy_setopt(m_handle.get(), option, value) : code;
    };
    set(CURLOPT_ERRORBUFFER, m_libraryError);
    set(CURLOPT_WRITEFUNCTION, &takeBody);
    set(CURLOPT_WRITEDATA, this);
    set(CURLOPT_HEADERFUNCTION, &takeHeader);
    set(CURLOPT_HEADERDATA, this);
    set(CURLOPT_XFERINFOFUNCTION, &watch);
    set(CURLOPT_XFERINFODATA, this);
    set(CURLOPT_NOPROGRESS, 0L);
    if (m_offset > 0 && m_transport == TransportType::eFtp) {
        set(CURLOPT_RESUME_FROM_LARGE, static_cast<curl_off_t>(m_offset));
    } else if (m_offset > 0) {
        // Not RESUME_FROM: the library would then refuse the whole file, the answer to a change.
        set(CURLOPT_RANGE, (std::to_string(m_offset) + "-").c_str());
    }
    return code == CURLE_OK;
}

CURLcode TransferAttempt::perform(CURLM* multi) {
    if (curl_multi_add_handle(multi, m_handle.get()) != CURLM_OK) {
        return CURLE_OUT_OF_MEMORY;
    }
    CURLcode code = CURLE_ABORTED_BY_CALLBACK;
    int running = 1;
    while (mayGoOn() && curl_multi_perform(multi, &running) == CURLM_OK && running != 0) {
        curl_multi_poll(multi, nullptr, 0, waitTime(), nullptr);
    }
    int left = 0;
    for (CURLMsg* message = nullptr; (message = curl_multi_info_read(multi, &left)) != nullptr;) {
        if (message->msg == CURLMSG_DONE) {
            code = message->data.result;
        }
    }
    curl_multi_remove_handle(multi, m_handle.get());
    return code;
}

bool TransferAttempt::mayGoOn() {
    if (m_cause != Cause::eNone) {
        return false;
    }
    if (m_stops.isStopping || m_stops.isDiscarded) {
        m_cause = m_stops.isStopping ? Cause::eStopped : Cause::eDiscarded;
        return false;
    }
    const Clock::time_point now = Clock::now();
    curl_off_t connectTime = 0;
    if (!m_isConnected &&
        curl_easy_getinfo(m_handle.get(), CURLINFO_CONNECT_TIME_T, &connectTime) == CURLE_OK &&
        connectTime > 0) {
        m_isConnected = true;
        m_lastSign = now;
    }
    if (now - m_lastSign >= (m_isConnected ? m_options.stallTimeout : m_options.connectTimeout)) {
        m_cause = m_isConnected ? Cause::eStalled : Cause::eNoConnection;
        return false;
    }
    return true;
}

/// Milliseconds until a time-out is due.
int TransferAttempt::waitTime() const {
    const auto limit = m_isConnected ? m_options.stallTimeout : m_options.connectTimeout;
    const auto left =
        std::chrono::ceil<std::chrono::milliseconds>(m_lastSign + limit - Clock::now());
    return static_cast<int>(std::clamp<long long>(left.count(), 0, 1000));
}

int TransferAttempt::watch(void* self, curl_off_t /*expected*/, curl_off_t /*received*/,
                           curl_off_t /*toSend*/, curl_off_t /*sent*/) {
    return static_cast<TransferAttempt*>(self)->mayGoOn() ? 0 : 1;
}

std::size_t TransferAttempt::takeHeader(char* /*bytes*/, std::size_t size, std::size_t count,
                                        void* self) {
    static_cast<TransferAttempt*>(self)->m_lastSign = Clock::now();
    return size * count;
}

std::size_t TransferAttempt::takeBody(char* bytes, std::size_t size, std::size_t count,
                                      void* self) {
    // Everything but the number offered ends the transfer.
    constexpr std::size_t kNotTaken = 0;
    const std::size_t length = size * count;
    return length == 0 || static_cast<TransferAttempt*>(self)->receive(bytes, length) ? length
                                                                                      : kNotTaken;
}

bool TransferAttempt::receive(const char* bytes, std::size_t count) {
    if (!m_hasBegun && !begin()) {
        return false;
    }
    if (!m_file.append(bytes, count, m_fault)) {
        m_cause = Cause::eLocalFault;
        return false;
    }
    m_progress.report(m_file.size(), m_version.size);
    m_lastSign = Clock::now();  // a slow disk is not the server's fault
    return true;
}

/// With the first byte, or at the end of an empty file: is it what was asked for?
bool TransferAttempt::begin() {
    const bool isFtp = m_transport == TransportType::eFtp;
    const long code = responseCode();
    const bool isPart = m_offset > 0 && (isFtp || code == kPartialContent);
    if (!isFtp && code != kOk && !isPart) {
        m_cause = Cause::eLocalFault;
        m_fault = "the server answered " + std::to_string(code);
        return false;
    }
    SourceVersion answered = answeredVersion(isPart);
    if (isPart && (answered != m_version || partStart() != static_cast<std::int64_t>(m_offset))) {
        m_cause = Cause::eChanged;
        return false;
    }
    if (!isPart && m_file.size() > 0 && !m_file.restart(m_fault)) {
        m_cause = Cause::eLocalFault;
        return false;
    }
    m_version = std::move(answered);
    m_hasBegun = true;
    m_progress.report(m_file.size(), m_version.size);
    return true;
}

SourceVersion TransferAttempt::answeredVersion(bool isPart) const {
    SourceVersion version;
    const std::int64_t length = contentLength();
    version.size = length < 0 || !isPart ? length : static_cast<std::int64_t>(m_offset) + length;
    if (m_transport == TransportType::eFtp) {
        curl_off_t changed = -1;
        curl_easy_getinfo(m_handle.get(), CURLINFO_FILETIME_T, &changed);
        version.validator = changed >= 0 ? std::to_string(changed) : "";
        return version;
    }
    version.validator = header("ETag");
    if (version.validator.empty() || version.validator.starts_with("W/")) {
        version.validator = header("Last-Modified");
    }
    return version;
}

/// Where the bytes that come now belong in the whole; negative when the server does not say.
std::int64_t TransferAttempt::partStart() const {
    if (m_transport == TransportType::eFtp) {
        return static_cast<std::int64_t>(m_offset);
    }
    constexpr std::string_view kUnit = "bytes ";
    const std::string range = header("Content-Range");
    return range.starts_with(kUnit) ? std::strtoll(range.c_str() + kUnit.size(), nullptr, 10) : -1;
}

std::string TransferAttempt::header(const char* name) const {
    curl_header* found = nullptr;
    return curl_easy_header(m_handle.get(), name, 0, CURLH_HEADER, -1, &found) == CURLHE_OK
               ? found->value
               : "";
}

std::int64_t TransferAttempt::contentLength() const {
    curl_off_t length = -1;
    curl_easy_getinfo(m_handle.get(), CURLINFO_CONTENT_LENGTH_DOWNLOAD_T, &length);
    return length;
}

long TransferAttempt::responseCode() const {
    long code = 0;
    curl_easy_getinfo(m_handle.get(), CURLINFO_RESPONSE_CODE, &code);
    return code;
}

/// Whether the server has no rest to give for what the file holds.
bool TransferAttempt::isWithoutRest(CURLcode code) const {
    return m_offset > 0 && !m_hasBegun &&
           (code == CURLE_BAD_DOWNLOAD_RESUME || code == CURLE_RANGE_ERROR ||
            code == CURLE_FTP_COULDNT_USE_REST ||
            (code == CURLE_HTTP_RETURNED_ERROR && responseCode() == kRangeNotSatisfiable));
}

TransferAttempt::Ending TransferAttempt::end(CURLcode code, std::string& error) {
    // A server that does not say goodbye has sent everything all the same.
    if (code == CURLE_OK && (m_hasBegun || begin())) {
        return Ending::eComplete;
    }
    error = m_cause != Cause::eNone ? causeText() : failureText(code);
    const bool isServersFault = m_cause == Cause::eNone || m_cause == Cause::eStalled;
    const bool canGoOn = m_hasBegun && isServersFault && m_version.isKnown() && m_file.size() > 0;
    const bool isChanged =
        m_cause == Cause::eChanged || (m_cause == Cause::eNone && isWithoutRest(code));
    return isChanged ? Ending::eSourceChanged : canGoOn ? Ending::eInterrupted : Ending::eFailed;
}

std::string TransferAttempt::causeText() const {
    switch (m_cause) {
        case Cause::eStopped:
            return "stopped with the service";
        case Cause::eDiscarded:
            return PartialFile::kDiscarded;
        case Cause::eNoConnection:
            return "no connection within " + secondsText(m_options.connectTimeout);
        case Cause::eStalled:
            return "the server sent nothing for " + secondsText(m_options.stallTimeout) + amount();
        case Cause::eChanged:
            return "the file has changed on the server";
        default:
            return m_fault;
    }
}

std::string TransferAttempt::failureText(CURLcode code) const {
    if (m_hasBegun) {
        return "the connection was lost" + amount();
    }
    if (code == CURLE_HTTP_RETURNED_ERROR) {
        return "the server answered " + std::to_string(responseCode());
    }
    long number = 0;
    curl_easy_getinfo(m_handle.get(), CURLINFO_OS_ERRNO, &number);
    if (code == CURLE_COULDNT_CONNECT && number != 0) {
        return "no connection: " + std::generic_category().message(static_cast<int>(number));
    }
    const std::string_view plain = plainText(code);
    const std::string detail =
        m_libraryError[0] != '\0' ? m_libraryError : curl_easy_strerror(code);
    return plain.empty() ? detail : std::string(plain);
}

std::string TransferAttempt::amount() const {
    if (!m_hasBegun) {
        return {};
    }
    return " after " + std::to_string(m_file.size()) + " of " +
           (m_version.size >= 0 ? std::to_string(m_version.size) : "an unknown number of") +
           " bytes";
}

}  // namespace vireo
