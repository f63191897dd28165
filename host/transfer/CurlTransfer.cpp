#include "transfer/CurlTransfer.h"

#include <csignal>
#include <exception>

#include "files/PartialName.h"
#include "log/Log.h"
#include "transfer/FileFetcher.h"

namespace vireo {
namespace {

constexpr int kDone = 100;
constexpr int kFailed = -1;

void logLine(int level, int line, const std::string& text) {
    if (loggingOnUni(level)) {
        logAppUni("Transfer", "./host/transfer/CurlTransfer", level, line, "%s", text.c_str());
    }
}

bool checkLocalPath(const std::string& path, std::string& error) {
    const std::string name = path.substr(path.rfind('/') + 1);
    if (!path.starts_with('/') || name.empty() || name == "." || name == ".." ||
        path.find('\0') != std::string::npos) {
        error = "'" + path + "' is no path of a file on this phone";
        return false;
    }
    if (isPartialName(name)) {
        error = "'" + name + "' is a name for incomplete files";
        return false;
    }
    return true;
}

/// Whether a transfer can begin at all.
bool check(const FetchOrder& order, std::string& error) {
    if (!checkLocalPath(order.request.localPath, error)) {
        return false;
    }
    if (order.request.transport != TransportType::eHttps) {
        return true;
    }
    if (!order.security) {
        error = "there are no certificates yet to verify the server by";
        return false;
    }
    if (!suffice(*order.security)) {
        error = "no authority is known to verify the server by";
        return false;
    }
    return true;
}

/// The main thread alone takes signals; and a server that hangs up must end no process.
void blockSignals() {
    sigset_t all;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, nullptr);
}

}  // namespace

struct CurlTransfer::Job {
    FetchOrder order;
    AdminProgressCallback& progress;
};

CurlTransfer::CurlTransfer(const std::string& storageRoot, const TransferOptions& options)
    : m_root(storageRoot), m_fetcher(std::make_unique<FileFetcher>(m_root, options, m_stops)) {
    removePartialFiles(storageRoot);
    m_thread = std::thread([this] { work(); });
}

CurlTransfer::~CurlTransfer() {
    stop();
}

void CurlTransfer::stop() {
    {
        const std::lock_guard lock(m_mutex);
        m_stops.isStopping = true;
    }
    m_changed.notify_all();
    m_fetcher->wake();
    if (m_thread.joinable()) {
        m_thread.join();
    }
}

void CurlTransfer::setSecurityDetails(const SecurityDetails& details) {
    auto copy = std::make_shared<const SecurityDetails>(details);
    const std::lock_guard lock(m_mutex);
    m_security = std::move(copy);
}

bool CurlTransfer::getFile(const TransferRequest& request, AdminProgressCallback& progress,
                           std::string& error) {
    const std::optional<SourceUrl> source = SourceUrl::compose(request, error);
    if (!source) {
        error = "no transfer: " + error;
        return false;
    }
    const std::lock_guard lock(m_mutex);
    const bool isSecure = request.transport == TransportType::eHttps;
    FetchOrder order{request, *source, isSecure ? m_security : nullptr};
    if (m_stops.isStopping) {
        error = "transfers have ended";
    } else if (m_isActive) {
        error = "another transfer is under way";
    } else if (check(order, error)) {
        m_directory = request.localPath.substr(0, request.localPath.rfind('/') + 1);
        m_stops.isDiscarded = false;
        m_job = std::make_unique<const Job>(Job{std::move(order), progress});
        m_isActive = true;
        m_changed.notify_all();
        return true;
    }
    error = "no transfer of " + source->name() + ": " + error;
    return false;
}

void CurlTransfer::discard(const std::string& directory) {
    const std::lock_guard lock(m_mutex);
    if (directory != m_directory) {
        return;
    }
    {
        const std::lock_guard naming(namesLock());
        m_stops.isDiscarded = true;
    }
    if (m_isActive) {
        m_fetcher->wake();
    } else if (!m_stops.isStopping) {  // else its own thread does it
        m_fetcher->forgetRest();
    }
}

void CurlTransfer::work() {
    blockSignals();
    while (true) {
        std::unique_lock lock(m_mutex);
        m_changed.wait(lock, [this] { return m_job || m_stops.isStopping; });
        const std::unique_ptr<const Job> job = std::move(m_job);
        lock.unlock();
        if (!job) {
            break;
        }
        run(*job);
    }
    m_fetcher->forgetRest();
}

void CurlTransfer::run(const Job& job) {
    std::string error;
    bool isDone = false;
    try {
        isDone = m_fetcher->fetch(job.order, job.progress, error);
    } catch (const std::exception& exception) {
        error = exception.what();
    }
    if (isDone) {
        logLine(kLogInfo, __LINE__, "fetched " + job.order.source.name());
    } else {
        logLine(kLogError, __LINE__, "cannot fetch " + job.order.source.name() + ": " + error);
    }
    {
        const std::lock_guard lock(m_mutex);
        if (m_stops.isDiscarded) {
            m_fetcher->forgetRest();
        }
        // Whoever is told the end may start the next transfer at once; it begins when this returns.
        m_isActive = false;
    }
    job.progress.progressNotify(isDone ? kDone : kFailed);
}

}  // namespace vireo
