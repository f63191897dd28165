#pragma once

#include <atomic>
#include <string>

#include "MgmtAgentIfc.h"
#include "service/Proxy.h"

namespace vireo {

/// An agent in another process, or in this one: reads and writes go straight to the agent where the
/// framework has it, else as text messages that wait for their reply. Changes and resets always
/// travel as messages that wait for nothing. Safe from every thread; takes no lock.
class MgmtAgentProxy : public Proxy, public MgmtAgentIfc {
public:
    void initProxy(ProxyRequest& request) override;

    /// False, and the record as it was, when no whole answer came in time.
    bool setData(ManageableData& record) override;
    bool getData(ManageableData& record) override;
    /// Whether the message was sent.
    bool manageableDataChanged(ManageableData& record) override;
    /// Deliberate: true also when nothing could be sent.
    bool resetUserData() override;

private:
    MgmtAgentIfc* getService();
    bool exchange(const char* command, ManageableData& record);
    static void stripResponse(std::string& text);

    ProxyRequest* m_request = nullptr;
    std::atomic<MgmtAgentIfc*> m_service{nullptr};
    bool m_noDirectService = false;
};

}  // namespace vireo
