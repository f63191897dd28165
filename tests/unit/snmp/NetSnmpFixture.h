#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "snmp/NetSnmpTraps.h"
#include "snmp/SNMPTrapData.h"
#include "snmp/SNMPVarbindTrapDataItem.h"
#include "snmp/TrapReceiverText.h"
#include "support/TemporaryDirectory.h"
#include "support/TestPorts.h"

namespace vireo::test {

inline constexpr const char* kLoopback = "127.0.0.1";

inline ReceiverSettings settingsOf(const std::string& text) {
    std::string error;
    const auto parsed = TrapReceiverText::parse(text, error);
    EXPECT_TRUE(parsed) << error;
    return parsed.value_or(ReceiverSettings());
}

/// Sessions of the real sender of traps, with options of the test.
class NetSnmpFixture : public ::testing::Test {
protected:
    std::unique_ptr<TrapSession> open(const std::string& host, const std::string& port,
                                      const std::string& password = "public") {
        if (!m_traps) {
            m_traps = std::make_unique<NetSnmpTraps>(root.path().string(), options);
        }
        return m_traps->open({host, port, password});
    }
    bool send(TrapSession& session, int generic) {
        error.clear();
        return session.sendGeneric(generic, error);
    }
    bool sendSpecific(TrapSession& session, int number, std::vector<TrapVarbind> varbinds = {}) {
        SNMPTrapData data;
        data.setSpecificTrapNo(number);
        auto item = std::make_unique<SNMPVarbindTrapDataItem>();
        for (TrapVarbind& varbind : varbinds) {
            item->add(std::move(varbind.subIdentifiers), std::move(varbind.value));
        }
        data.addSNMPTrapDataItem(std::move(item));
        error.clear();
        return session.sendSpecific(data, error);
    }
    void stop() { m_traps->stop(); }
    /// Whether there is an error line with this text, once, before long.
    bool saidInTime(const char* text) {
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(5);
        while (ports.count(kLogError, text) == 0 && std::chrono::steady_clock::now() < end) {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        return ports.count(kLogError, text) == 1;
    }
    /// The next session is of a port with other options. Sessions have ended before.
    void end() { m_traps.reset(); }

    TestPorts ports{kLogWarning};
    TrapOptions options;
    std::string error;
    TemporaryDirectory root;

private:
    std::unique_ptr<NetSnmpTraps> m_traps;
};

}  // namespace vireo::test
