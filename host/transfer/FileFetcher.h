#pragma once

#include <curl/curl.h>

#include <memory>
#include <optional>
#include <string>

#include "transfer/PartialFile.h"
#include "transfer/SourceUrl.h"
#include "transfer/SourceVersion.h"
#include "transfer/TransferAttempt.h"
#include "transfer/TransferOptions.h"
#include "transfer/TransferProgress.h"
#include "transfer/TransferStops.h"

namespace vireo {

/// What is fetched.
struct FetchOrder {
    TransferRequest request;
    SourceUrl source;
    std::shared_ptr<const SecurityDetails> security;  ///< null for FTP
};

/// Fetches one file after the other. What an interrupted transfer leaves is continued by the next
/// one, if it is for the same source and place and the source has not changed; any other removes
/// it. For one thread at a time, but for `wake`.
class FileFetcher {
public:
    /// All files come to lie below `root`. What is not owned outlives this.
    FileFetcher(const ConfinedRoot& root, const TransferOptions& options,
                const TransferStops& stops);
    FileFetcher(const FileFetcher&) = delete;
    FileFetcher& operator=(const FileFetcher&) = delete;
    ~FileFetcher();

    /// True when the file is in its place. False with a one-line `error`; what was in the place is
    /// still there then.
    bool fetch(const FetchOrder& order, AdminProgressCallback& callback, std::string& error);
    /// Removes what an interrupted transfer left.
    void forgetRest() { m_rest.reset(); }
    /// Makes a transfer look at the stops at once. From any thread.
    void wake() { curl_multi_wakeup(m_multi); }

private:
    /// What an interrupted transfer left.
    struct Rest {
        std::string url;
        std::string userName;
        std::string localPath;
        PartialFile file;
        SourceVersion version;
    };

    std::optional<Rest> restFor(const FetchOrder& order, std::string& error);
    TransferAttempt::Ending attempt(const FetchOrder& order, Rest& rest, TransferProgress& progress,
                                    std::string& error);

    const ConfinedRoot& m_root;
    const TransferOptions m_options;
    const TransferStops& m_stops;
    CURLM* const m_multi;
    std::optional<Rest> m_rest;
};

}  // namespace vireo
