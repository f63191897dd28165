#pragma once

#include <chrono>
#include <functional>
#include <mutex>
#include <string>

#include "passwords/PasswordDirectory.h"
#include "service/Executable.h"
#include "services/PasswordMgmtSvcIfc.h"

namespace vireo {

/// The phone's passwords on the files of a `PasswordDirectory`, which are read anew each time.
///
/// Wrong passwords are delayed: from the third in a row on, none is looked at for a while, 5
/// seconds at first, then twice as long each time, up to 15 minutes. What comes meanwhile is
/// refused at once, be it right or wrong, and does not make the wait longer; so nobody waits in
/// here. The number of wrong ones survives a restart, and the wait begins anew then. A right
/// password ends the count, and so does a new one that is set.
class PasswordService : public PasswordMgmtSvcIfc, public Executable {
public:
    using Time = std::chrono::steady_clock::time_point;
    using Clock = std::function<Time()>;

    /// What `verifyPassword` answers.
    enum eResult {
        eAccepted = 0,
        eWrong = 1,
        eNotSet = 2,   ///< every password is refused
        eTooSoon = 3,  ///< not looked at, after wrong ones
        eUnknownKind = 4,
        eUnreadable = 5,
    };

    explicit PasswordService(PasswordDirectory directory,
                             Clock clock = std::chrono::steady_clock::now);

    int verifyPassword(int kind, const std::string& password) override;

    /// How long no password is looked at after so many wrong ones in a row.
    static std::chrono::seconds waitAfter(unsigned failures);

private:
    eResult verify(const std::string& password);
    void count(unsigned failures);

    const PasswordDirectory m_directory;
    const Clock m_clock;
    std::mutex m_mutex;
    std::string m_hash;  ///< that the failures are counted for
    unsigned m_failures;
    Time m_next;  ///< when a password is looked at again
};

}  // namespace vireo
