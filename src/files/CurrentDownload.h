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
    /// Gives the claim back without a download.
    void release();

    /// The claimed download starts: progress 0, nothing burnt.
    void begin(const Facts& facts);
    /// It does not start after all: what `begin` has changed is as it was.
    void cancel();
    Facts facts() const;

    /// Percent, negative when it failed.
    int progress() const;
    void setProgress(int percent);

    /// What reports of the platform are about.
    enum class Phase { eNone, eTransfer, eBurn };
    Phase phase() const;

    /// The last report of this phase is being handled on this thread.
    void beginEnd();
    /// The end of the transfer has been handled, or that of the waiting caller's part in it. The
    /// claim is given back, and nobody hears of the download any more, unless its image is being
    /// burnt.
    void finish();

    /// True for the first who wants to burn the image of this download. From then on reports are
    /// about the burn.
    bool tryBurn();
    /// The burn has ended, or did not start. As `finish`, when that was called.
    void endBurn();

    /// Whoever hears of the download is being told of its end, and has no say in anything any more.
    void dismissCallback();
    /// If it was `callback` who hears of the download, nobody does any more.
    void forget(const LocalMgmtCallbackIfc& callback);

    /// Tells the waiting caller the outcome. The transfer has ended.
    void deliver(bool success);
    /// Waits for `deliver`, without limit.
    bool await();

private:
    struct State {
        Facts facts;
        int progress = 0;
        Phase phase = Phase::eNone;
        bool hasBurnStarted = false;
    };

    void giveBack();

    mutable std::mutex m_mutex;
    std::condition_variable m_released;
    Semaphore m_setUpLock{1, 1};
    Semaphore m_completion{0, 1};
    State m_state;
    State m_before;  ///< what a start that fails goes back to
    bool m_isClaimed = false;
    bool m_isFinished = false;
    bool m_outcome = false;
    std::thread::id m_ender;  ///< the thread that handles the last report
};

}  // namespace vireo
