#pragma once

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "Ports.h"
#include "data/ManageableData.h"
#include "service/Context.h"
#include "service/VireoClientMgmt.h"
#include "snmp/SNMPTrapData.h"
#include "snmp/TrapPort.h"
#include "support/TestPorts.h"

namespace vireo::test {

using ItemTexts = std::vector<std::pair<std::string, std::string>>;

struct BareContext : SvcRTEContext {
    Executable* findService(const std::string& /*interfaceName*/) override { return nullptr; }
    void postToMessageThread(std::function<void()> task) override { task(); }
    TimerFacility* timers() override { return nullptr; }
};

/// The whole service on a phone whose only items are those of the receivers of traps, and one that
/// belongs to an agent. They are kept in memory.
class TrapHouse {
public:
    explicit TrapHouse(int logLevel = kLogWarning) : ports(logLevel) {
        std::string items;
        for (const char* tag :
             {"snmp-traps-active", "snmp-trap-addr", "snmp-trap-port", "snmp-trap-pwd",
              "qdc-qcu-active", "qdc-collection-unit-addr", "qdc-collection-unit-port",
              "qdc-trap-pwd", "qdc-snmp-active", "tcErrorReportSNMP", "diagnostic-trap-addr",
              "diagnostic-trap-port", "diagnostic-trap-pwd", "diagnostic-snmp-active"}) {
            items += "<item><rootId>" + std::string(tag) + "</rootId><schema>text</schema></item>";
        }
        ports.files["vcmsInit.xml"] =
            "<dxl><document name=\"vcmsServiceList\" schema=\"serviceList\"><service>"
            "<import>items.xml</import><managementId>VcmsMgmtId</managementId>"
            "<itemMap>ownItems</itemMap></service><service><managementId>AgentMgmtId"
            "</managementId><itemMap>agentItems</itemMap></service></document></dxl>";
        ports.files["items.xml"] =
            "<dxl><schema name=\"text\" type=\"string\"/>"
            "<document name=\"ownItems\" schema=\"itemMap\">" +
            items +
            "</document><document name=\"agentItems\" schema=\"itemMap\">"
            "<item><rootId>agent-item</rootId><schema>text</schema></item>"
            "<item><rootId>agent-item-2</rootId><schema>text</schema></item>"
            "</document></dxl>";
    }

    /// To be called once, when the ports are complete.
    void start() { service.init(context); }

    /// Writes all in one record.
    void set(const ItemTexts& items) {
        ManageableData record;
        for (const auto& [tag, value] : items) {
            record.populate(tag, value);
        }
        EXPECT_TRUE(service.setData(record)) << record.serialize();
    }
    bool raise(int dest, int trap) {
        return service.raiseGenericTrap(static_cast<LocalMgmtIfc::TrapDest>(dest), trap);
    }

    TestPorts ports;
    BareContext context;
    VireoClientMgmt service;
};

/// Notes what is sent: "ADDRESS:PORT PASSWORD generic N" or "... specific N".
class NotedTraps : public TrapPort {
public:
    std::unique_ptr<TrapSession> open(const TrapAddress& address) override {
        ++opened;
        return std::make_unique<Session>(*this, address);
    }
    std::vector<std::string> takeSent() {
        const std::lock_guard lock(m_mutex);
        return std::exchange(m_sent, {});
    }

    std::atomic<int> opened{0};
    std::atomic<int> closed{0};
    std::function<void()> onSend;  ///< while it is being sent

private:
    class Session : public TrapSession {
    public:
        Session(NotedTraps& traps, const TrapAddress& address)
            : m_traps(traps),
              m_name(address.host + ":" + address.port + " " + address.password + " ") {}
        ~Session() override { ++m_traps.closed; }
        bool sendGeneric(int genericTrap, std::string& error) override {
            return note("generic " + std::to_string(genericTrap), error);
        }
        bool sendSpecific(const SNMPTrapData& data, std::string& error) override {
            return note("specific " + std::to_string(data.specificTrapNo()), error);
        }

    private:
        bool note(const std::string& what, std::string& error) {
            if (m_traps.onSend) {
                m_traps.onSend();
            }
            const std::lock_guard lock(m_traps.m_mutex);
            m_traps.m_sent.push_back(m_name + what);
            error = "cannot";
            return m_name.front() != ':';
        }

        NotedTraps& m_traps;
        const std::string m_name;
    };

    std::mutex m_mutex;
    std::vector<std::string> m_sent;
};

}  // namespace vireo::test
