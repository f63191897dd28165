#pragma once

#include <memory>
#include <mutex>
#include <string>

#include "MgmtAgentIfc.h"
#include "reporting/TrapTags.h"

namespace vireo {

class SNMPTrapData;
class SNMPTrapIf;

/// One receiver of traps: its session, which is opened by the first trap and closed when an item
/// about the receiver changes. Raising is for one thread at a time; the rest is safe from every
/// thread. No lock is held across a call out.
class SNMPDestMgr : public MgmtAgentIfc {
public:
    /// `service` is not owned and outlives the manager, as do the tags.
    SNMPDestMgr(LocalMgmtIfc* service, const char* activeTag, const char* addressTag,
                const char* portTag, const char* passwordTag);
    ~SNMPDestMgr() override;
    SNMPDestMgr(const SNMPDestMgr&) = delete;
    SNMPDestMgr& operator=(const SNMPDestMgr&) = delete;

    /// False when the receiver is switched off, without a word, or the trap cannot be sent.
    bool raiseTrap(int genericTrap);
    bool raiseTrap(const SNMPTrapData& data);

    /// Opens the session if it is closed, with what the items say now. False while the receiver is
    /// switched off.
    bool initSNMPTrapSession();
    /// Ends the session; false when it is closed. A trap that is being sent still is.
    bool deleteTrap();
    /// The same, and observes the items no more.
    void close();

    /// Deliberate: closes only. The next trap opens the session with the new values, so a receiver
    /// that was switched off stays silent until it is switched on and a trap is raised.
    bool manageableDataChanged(ManageableData& record) override;
    bool setData(ManageableData& /*record*/) override { return false; }
    bool getData(ManageableData& /*record*/) override { return false; }
    bool resetUserData() override { return false; }

private:
    using Session = std::shared_ptr<SNMPTrapIf>;
    struct Settings;

    Session session() const;
    Session openSession();
    Session openOnce(bool& isUpToDate);
    Settings readSettings();
    bool holdsStill(const Settings& settings) const;
    void observe();
    void stopObserving();

    LocalMgmtIfc* const m_service;
    const TrapTags m_tags;
    mutable std::mutex m_mutex;
    Session m_session;  ///< guarded by m_mutex; null while closed
};

}  // namespace vireo
