#include "transfer/FileFetcher.h"

#include "log/Log.h"

namespace vireo {
namespace {

void logLine(int line, const SourceUrl& source, const std::string& what) {
    if (loggingOnUni(kLogInfo)) {
        logAppUni("Transfer", "./host/transfer/FileFetcher", kLogInfo, line, "%s %s",
                  source.name().c_str(), what.c_str());
    }
}

}  // namespace

FileFetcher::FileFetcher(const ConfinedRoot& root, const TransferOptions& options,
                         const TransferStops& stops)
    : m_root(root),
      m_options(options),
      m_stops(stops),
      m_multi(startCurl() ? curl_multi_init() : nullptr) {}

FileFetcher::~FileFetcher() {
    curl_multi_cleanup(m_multi);
}

bool FileFetcher::fetch(const FetchOrder& order, AdminProgressCallback& callback,
                        std::string& error) {
    std::optional<Rest> rest = restFor(order, error);
    if (!rest) {
        return false;
    }
    TransferProgress progress(callback);
    TransferAttempt::Ending ending = attempt(order, *rest, progress, error);
    if (ending == TransferAttempt::Ending::eSourceChanged) {
        logLine(__LINE__, order.source, "has changed and is fetched as a whole");
        if (!rest->file.restart(error)) {
            return false;
        }
        rest->version = {};
        ending = attempt(order, *rest, progress, error);
    }
    std::string ignored;  // the interruption is what counts
    if (ending == TransferAttempt::Ending::eInterrupted && rest->file.flush(ignored)) {
        m_rest.emplace(std::move(*rest));
    }
    return ending == TransferAttempt::Ending::eComplete &&
           rest->file.commit(m_stops.isDiscarded, error);
}

/// What is there already of a source, or nothing of it. What is there of another one goes.
std::optional<FileFetcher::Rest> FileFetcher::restFor(const FetchOrder& order, std::string& error) {
    std::optional<Rest> rest;
    if (m_rest && m_rest->url == order.source.url && m_rest->userName == order.request.userName &&
        m_rest->localPath == order.request.localPath && m_rest->file.isInPlace()) {
        rest.emplace(std::move(*m_rest));
        logLine(__LINE__, order.source,
                "is continued after " + std::to_string(rest->file.size()) + " bytes");
    }
    m_rest.reset();
    if (!rest) {
        std::optional<PartialFile> file =
            PartialFile::create(m_root, order.request.localPath, error);
        if (file) {
            rest.emplace(Rest{order.source.url,
                              order.request.userName,
                              order.request.localPath,
                              std::move(*file),
                              {}});
        }
    }
    return rest;
}

TransferAttempt::Ending FileFetcher::attempt(const FetchOrder& order, Rest& rest,
                                             TransferProgress& progress, std::string& error) {
    CurlHandle handle = makeHandle(order.request, order.source, m_options);
    if (m_multi == nullptr || !handle ||
        (order.security && !secure(handle.get(), *order.security))) {
        error = "the transfer library does not work";
        return TransferAttempt::Ending::eFailed;
    }
    return TransferAttempt(std::move(handle), order.request.transport, m_options, rest.file,
                           rest.version, progress, m_stops)
        .run(m_multi, error);
}

}  // namespace vireo
