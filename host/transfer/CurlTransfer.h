#pragma once

#include <atomic>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

#include "device/DevicePorts.h"
#include "files/ConfinedRoot.h"
#include "transfer/TransferOptions.h"
#include "transfer/TransferStops.h"

namespace vireo {

class FileFetcher;

/// Fetches files over FTP and HTTPS, one at a time, on a thread of its own.
///
/// A transfer that is interrupted leaves what it has under a hidden name. If the next one has the
/// same source and the same local path, and the source has not changed, it fetches the rest alone;
/// any other removes it. So does the end of this object, and its next construction removes what a
/// crash left.
///
/// Every transfer that fails has one error line with server, file and reason.
class CurlTransfer : public TransferPort {
public:
    /// `storageRoot` is the directory below which all local paths lie; on the way from there no
    /// link is followed. Removes what an earlier run
    /// left there.
    explicit CurlTransfer(const std::string& storageRoot, const TransferOptions& options = {});
    CurlTransfer(const CurlTransfer&) = delete;
    CurlTransfer& operator=(const CurlTransfer&) = delete;
    ~CurlTransfer() override;

    /// Ends a transfer that is under way, with its last report, and refuses further ones. Returns
    /// when the thread has ended; never called on it.
    void stop();

    void setSecurityDetails(const SecurityDetails& details) override;
    bool getFile(const TransferRequest& request, AdminProgressCallback& progress,
                 std::string& error) override;
    bool isActive() override { return m_isActive.load(); }
    void discard(const std::string& directory) override;

private:
    struct Job;

    void work();
    void run(const Job& job);

    std::atomic<bool> m_isActive{false};
    TransferStops m_stops;
    const ConfinedRoot m_root;
    const std::unique_ptr<FileFetcher> m_fetcher;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::unique_ptr<const Job> m_job;                   ///< guarded by m_mutex
    std::string m_directory;                            ///< of the last file; guarded by m_mutex
    std::shared_ptr<const SecurityDetails> m_security;  ///< guarded by m_mutex; null: never set
    std::thread m_thread;
};

}  // namespace vireo
