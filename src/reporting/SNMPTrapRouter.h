#pragma once

#include <array>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "LocalMgmtIfc.h"
#include "MgmtAgentIfc.h"
#include "reporting/RaiseTurn.h"
#include "reporting/TrapTags.h"

namespace vireo {

class Context;
class SNMPDestMgr;
class SNMPTrapData;
class SvcRTEContext;

/// Routes traps to their receivers: each to its own, and copies to others as the switches say.
/// Safe from every thread. While a trap is sent the others wait for their turn (`RaiseTurn`); item
/// changes do not.
class SNMPTrapRouter : public MgmtAgentIfc {
public:
    /// `registry` may be null; not owned, outlives the router.
    explicit SNMPTrapRouter(const RegistrySemaphore* registry = nullptr);
    ~SNMPTrapRouter() override;
    SNMPTrapRouter(const SNMPTrapRouter&) = delete;
    SNMPTrapRouter& operator=(const SNMPTrapRouter&) = delete;

    // Once, and before anything else.
    /// `service` answers for the receivers' items; not owned, outlives the router.
    void init(LocalMgmtIfc* service);
    /// The service is asked of the context when it is first needed.
    void init(Context& context);

    /// True when the trap was sent to its own receiver, whatever became of the copies.
    bool raiseGenericTrap(LocalMgmtIfc::TrapDest dest, int genericTrap);
    bool raiseSpecificTrap(LocalMgmtIfc::TrapDest dest, const SNMPTrapData& data);
    /// Closes a receiver's session and forgets where its traps are copied to, as if none had been
    /// raised yet. Nothing for an unknown receiver.
    void deleteDestination(int dest);

    /// A switch for copies has changed.
    bool manageableDataChanged(ManageableData& record) override;
    bool setData(ManageableData& /*record*/) override { return false; }
    bool getData(ManageableData& /*record*/) override { return false; }
    bool resetUserData() override { return false; }

private:
    using Managers = std::vector<SNMPDestMgr*>;

    struct Destination {
        SNMPDestMgr* primary = nullptr;       ///< null until the first trap, or copy, for it
        std::unique_ptr<Managers> secondary;  ///< who gets copies; null until there was one
    };
    /// Who gets a trap, as it was at one moment.
    struct Route {
        SNMPDestMgr* primary = nullptr;
        std::array<SNMPDestMgr*, kTrapDestinations> copies{};
    };

    template <class Trap>
    bool raise(LocalMgmtIfc::TrapDest dest, const Trap& trap);
    LocalMgmtIfc* service();
    Route routeOf(unsigned dest);
    bool initDestinations(unsigned dest);
    bool setPrimaryDestination(unsigned dest);
    bool setPrimary(unsigned dest);
    void initSecondaryDestinations(unsigned dest);
    bool setSecondaryDestinationByTagVal(const std::string& tag, const std::string& value);
    bool applySwitch(const std::string& tag, const std::string& value);
    void updateSecondaryDestinationManagers(unsigned primary, unsigned secondary, bool add);
    void addSecondary(unsigned primary, unsigned secondary);
    void confirmSwitch(LocalMgmtIfc& items, const char* tag, const std::string& applied,
                       unsigned changesBefore);

    RaiseGate m_gate;
    LocalMgmtIfc* m_service = nullptr;
    SvcRTEContext* m_context = nullptr;
    std::mutex m_tableMutex;  ///< guards what follows; nothing is called out to under it
    std::array<Destination, kTrapDestinations> m_destinations;
    std::array<std::unique_ptr<SNMPDestMgr>, kTrapDestinations> m_managers;  ///< for good
    unsigned m_switchChanges = 0;                                            ///< that were told
};

}  // namespace vireo
