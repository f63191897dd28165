#pragma once

#include <curl/curl.h>

#include <chrono>
#include <cstdint>
#include <string>

#include "transfer/CurlHandle.h"
#include "transfer/PartialFile.h"
#include "transfer/SourceVersion.h"
#include "transfer/TransferOptions.h"
#include "transfer/TransferProgress.h"
#include "transfer/TransferStops.h"

namespace vireo {

/// One conversation with a server, from the first connection to the last byte. For one thread; used
/// once.
class TransferAttempt {
public:
    enum class Ending {
        eComplete,
        eInterrupted,    ///< what the file holds is good, the rest may be fetched later
        eSourceChanged,  ///< what the file held cannot be continued
        eFailed
    };

    /// Continues `file` when it holds something; that is of `version` then. Both are brought up to
    /// date while the transfer runs. The handle is that of the source. What is not owned outlives
    /// this.
    TransferAttempt(CurlHandle handle, TransportType transport, const TransferOptions& options,
                    PartialFile& file, SourceVersion& version, TransferProgress& progress,
                    const TransferStops& stops);

    /// Returns at the end, after a time-out, or soon after a stop was set and the multi
    /// handle woken up. Unless complete, with a one-line `error`.
    Ending run(CURLM* multi, std::string& error);

private:
    using Clock = std::chrono::steady_clock;
    /// Why this side ended the transfer.
    enum class Cause {
        eNone,
        eStopped,
        eDiscarded,
        eNoConnection,
        eStalled,
        eChanged,
        eLocalFault
    };

    static std::size_t takeBody(char* bytes, std::size_t size, std::size_t count, void* self);
    static std::size_t takeHeader(char* bytes, std::size_t size, std::size_t count, void* self);
    static int watch(void* self, curl_off_t, curl_off_t, curl_off_t, curl_off_t);

    bool prepare();
    CURLcode perform(CURLM* multi);
    bool mayGoOn();
    int waitTime() const;
    bool receive(const char* bytes, std::size_t count);
    bool begin();
    SourceVersion answeredVersion(bool isPart) const;
    std::int64_t partStart() const;
    std::string header(const char* name) const;
    std::int64_t contentLength() const;
    long responseCode() const;
    bool isWithoutRest(CURLcode code) const;
    Ending end(CURLcode code, std::string& error);
    std::string causeText() const;
    std::string failureText(CURLcode code) const;
    std::string amount() const;

    const TransportType m_transport;
    const TransferOptions& m_options;
    PartialFile& m_file;
    SourceVersion& m_version;
    TransferProgress& m_progress;
    const TransferStops& m_stops;

    const std::uint64_t m_offset;  ///< what the file held before
    bool m_isConnected = false;
    bool m_hasBegun = false;
    Cause m_cause = Cause::eNone;
    std::string m_fault;
    Clock::time_point m_lastSign;
    char m_libraryError[CURL_ERROR_SIZE] = {};
    const CurlHandle m_handle;  ///< last: its end may still call back
};

}  // namespace vireo
