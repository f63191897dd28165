#pragma once

#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>

#include "LocalMgmtIfc.h"
#include "sync/Semaphore.h"

namespace vireo {

class LocalMgmtCallbackIfc;

/// The one download of the phone, and who has a claim to it. Safe from every thread. Its own lock
/// is a leaf.
class CurrentDownload {
public:
    /// What a download is about. A copy says how it was when it was taken.
    struct Facts {
        LocalMgmtIfc::eFiletype type = LocalMgmtIfc::FILETYPE_INVALID;
        std::string path;                          ///< where the file is to appear
        LocalMgmtCallbackIfc* callback = nullptr;  ///< who hears of it; null: nobody
        bool isAwaited = false;                    ///< its caller waits for the end
    };

    /// Held while a transfer or a burn is being set up.
    Semaphore& setUpLock() { return m_setUpLock; }

    /// Takes the claim to make the next download. False while a download or a burn is under way;
    /// one that is just reporting its end is waited for a moment.
    bool tryClaim();
    /// Gives the claim back.
    void release();

    /// The claimed download starts: progress 0, nothing burnt.
    void begin(const Facts& facts);
    /// The transfer did not start after all: `end` is not to come.
    void cancel();
    Facts facts() const;

    /// Percent, negative when it failed.
    int progress() const;
    void setProgress(int percent);

    /// True for the first who wants to burn the image of this download.
    bool tryBurn();

    /// The last report of a transfer that is under way is being handled on this thread.
    void beginEnd();
    /// Whether the transfer has begun and its end has not been handled yet.
    bool isUnderWay() const;
    void endTransfer();
    /// Gives the claim back after the end. Nobody hears of the download any more, unless its image
    /// is being burnt.
    void finish(bool isBurning);
    /// The burn has ended: nobody hears of the download any more.
    void endBurn();
    /// Tells the waiting caller the outcome.
    void deliver(bool success);
    /// Waits for `deliver`, without limit.
    bool await();

private:
    mutable std::mutex m_mutex;
    std::condition_variable m_released;
    Semaphore m_setUpLock{1, 1};
    Semaphore m_completion{0, 1};
    Facts m_facts;
    int m_progress = 0;
    bool m_isClaimed = false;
    bool m_hasBurnStarted = false;
    bool m_hasBurnEnded = false;
    bool m_isUnderWay = false;
    bool m_outcome = false;
    std::thread::id m_ender;  ///< the thread that handles the last report
};

}  // namespace vireo
