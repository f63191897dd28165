#include "support/AgentPeer.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <utility>

#include "support/ProcessState.h"

namespace vireo::test {

AgentPeer::AgentPeer(const RunningPhone& phone, const std::string& channelName)
    : m_channelName(channelName) {
    whenRead = [this](ManageableData& record) {
        bool result = true;
        for (const std::string& tag : Words(record.rootIds())) {
            const auto kept = m_values.try_emplace(tag, tag + " of " + m_channelName).first;
            result = record.populate(tag, kept->second) && result;
        }
        return result;
    };
    whenWritten = [this](ManageableData& record) {
        bool result = true;
        for (const std::string& tag : record.rootIds()) {
            result = record.interogate(tag, tag, m_values[tag]) && result;
        }
        return result;
    };
    LocalMgmtClient::Options options;
    options.socketPath = phone.socket();
    options.channelName = channelName;
    options.timeout = std::chrono::seconds(60);
    options.agent = this;
    std::string error;
    m_client = LocalMgmtClient::connect(options, error);
    if (!m_client) {
        throw std::runtime_error(error);
    }
}

bool AgentPeer::own(const std::string& managementId, bool bulk) {
    bool registered = false;
    EXPECT_EQ(m_client->registerManagementIdentity(managementId, bulk, registered),
              CallStatus::eDone);
    m_isServing = m_client->startServing();
    EXPECT_TRUE(m_isServing);
    return registered;
}

bool AgentPeer::observe(const std::string& tag, bool bulk) {
    bool observed = false;
    EXPECT_EQ(m_client->observeData(tag, bulk, observed), CallStatus::eDone);
    return observed;
}

bool AgentPeer::stopObserving(const std::string& tag) {
    bool stopped = false;
    EXPECT_EQ(m_client->stopObservingData(tag, stopped), CallStatus::eDone);
    return stopped;
}

Words AgentPeer::takeTranscript() {
    if (!m_isServing) {
        // What was sent before the reply is served before it.
        std::string ignored;
        EXPECT_EQ(m_client->findSchemaName("language", ignored), CallStatus::eDone)
            << m_client->closeReason();
    }
    const std::lock_guard lock(m_mutex);
    return std::exchange(m_transcript, {});
}

Words AgentPeer::waitForTranscript(std::size_t lines) {
    eventually([&] {
        const std::lock_guard lock(m_mutex);
        return m_transcript.size() >= lines;
    });
    return takeTranscript();
}

bool AgentPeer::getData(ManageableData& record) {
    putDown("get", record.rootIds());
    return whenRead(record);
}

bool AgentPeer::setData(ManageableData& record) {
    putDown("set", itemsOf(record));
    return whenWritten(record);
}

bool AgentPeer::manageableDataChanged(ManageableData& record) {
    putDown("told", itemsOf(record));
    return true;
}

void AgentPeer::putDown(std::string line, const Words& items) {
    for (const std::string& item : items) {
        line += ' ' + item;
    }
    const std::lock_guard lock(m_mutex);
    m_transcript.push_back(std::move(line));
}

}  // namespace vireo::test
