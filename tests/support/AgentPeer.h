#pragma once

#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>

#include "LocalMgmtClient.h"
#include "support/ItemCalls.h"
#include "support/RunningPhone.h"

namespace vireo::test {

/// A peer of the service with an agent: owns items, observes items, and puts down what it is asked
/// and told, in order. Disconnects at its end.
class AgentPeer : private MgmtAgentIfc {
public:
    using Answer = std::function<bool(ManageableData&)>;

    /// Connects. Nothing is served except during calls, until `own` or `client().startServing()`.
    AgentPeer(const RunningPhone& phone, const std::string& channelName);

    LocalMgmtClient& client() { return *m_client; }

    /// Registers for a management id and serves on a thread of the library.
    bool own(const std::string& managementId, bool bulk);
    /// Observes one item or collection, or "all-data".
    bool observe(const std::string& tag, bool bulk = false);
    bool stopObserving(const std::string& tag);

    /// What was asked and told since the last time, each as "get a b", "set a=1 b=2" or "told a=1".
    /// For a peer that does not serve: of all that the service sent before this call.
    Words takeTranscript();
    /// Waits until there is so much of it, at most half a minute. For a peer that serves.
    Words waitForTranscript(std::size_t lines);

    // How it answers; set before it owns anything. By default it keeps what is written, and has
    // "<tag> of <channel>" otherwise.
    Answer whenRead;
    Answer whenWritten;

private:
    bool getData(ManageableData& record) override;
    bool setData(ManageableData& record) override;
    bool manageableDataChanged(ManageableData& record) override;
    bool resetUserData() override { return true; }

    void putDown(std::string line, const Words& items);

    const std::string m_channelName;
    bool m_isServing = false;
    std::map<std::string, std::string> m_values;  // used by the agent alone
    std::mutex m_mutex;
    Words m_transcript;
    std::unique_ptr<LocalMgmtClient> m_client;  // last: it calls this object
};

}  // namespace vireo::test
