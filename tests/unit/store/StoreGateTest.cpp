#include <atomic>
#include <thread>

#include "StoreFixture.h"
#include "store/StoreGate.h"

namespace vireo {
namespace {

namespace fs = std::filesystem;

class StoreGateTest : public ::testing::Test {
protected:
    StoreGateTest() { m_ports.files["store.xml"] = kCatalogue; }

    static bool update(StoreGate& gate, std::string_view value) {
        const std::string answer = gate.request(updateText("Settings", element("A", value)));
        return answer.find("update_response") != std::string::npos;
    }
    static bool reads(StoreGate& gate, std::string_view value) {
        return gate.request(readText("Settings", "A")).find(element("A", value)) !=
               std::string::npos;
    }

    static constexpr const char* kCatalogue =
        R"(<store><table name="Settings"><column name="A"/></table></store>)";
    test::TestPorts m_ports{kLogWarning};
    const test::TemporaryDirectory m_directory;
    const std::string m_file = m_directory.file("data/store.db");
};

// That it opens once the reason is gone is seen in the tests of the phone.
TEST_F(StoreGateTest, SaysOnceWhyItIsClosedAndAgainWhenTheReasonIsAnother) {
    m_ports.files["store.xml"] = "<store><table/></store>";
    StoreGate gate(m_file, "store.xml", {.busyTimeoutMs = 0, .retryIntervalMs = 0});
    EXPECT_FALSE(update(gate, "lost"));
    EXPECT_FALSE(update(gate, "lost"));
    EXPECT_EQ(m_ports.count(kLogError, "STORE CLOSED: the configuration file store.xml"), 1);
    m_ports.files.erase("store.xml");
    EXPECT_FALSE(update(gate, "lost"));
    EXPECT_EQ(m_ports.count(kLogError, "STORE CLOSED"), 2);
}

TEST_F(StoreGateTest, DoesNotTryMoreOftenThanTheInterval) {
    m_ports.files.clear();
    StoreGate gate(m_file, "store.xml", {.busyTimeoutMs = 0, .retryIntervalMs = 3'600'000});
    m_ports.files["store.xml"] = kCatalogue;
    EXPECT_FALSE(update(gate, "x"));
    EXPECT_FALSE(fs::exists(m_file));
}

TEST_F(StoreGateTest, BracketsThatBeganWhileItWasClosedEndWell) {
    m_ports.files.clear();
    StoreGate gate(m_file, "store.xml", {.busyTimeoutMs = 0, .retryIntervalMs = 0});
    gate.beginUpdate();
    EXPECT_FALSE(update(gate, "1"));
    m_ports.files["store.xml"] = kCatalogue;
    gate.beginUpdate();
    EXPECT_TRUE(update(gate, "2"));
    EXPECT_TRUE(gate.commitUpdate());
    EXPECT_TRUE(gate.commitUpdate());
    // A bracket left over would keep this update from the disk.
    EXPECT_TRUE(update(gate, "3"));
    test::TestPorts otherPorts;
    otherPorts.files["store.xml"] = kCatalogue;
    fs::create_directory(m_directory.file("copy"));
    for (const char* part : {"", "-wal"}) {
        fs::copy_file(m_file + part, m_directory.file("copy/store.db") + part);
    }
    StoreGate copy(m_directory.file("copy/store.db"), "store.xml", {});
    EXPECT_TRUE(reads(copy, "3"));
}

TEST_F(StoreGateTest, ManyThreadsMeetItWhileItOpens) {
    // A directory in place of the file: what is there cannot be used, until it is gone.
    fs::create_directories(m_file);
    StoreGate gate(m_file, "store.xml", {.busyTimeoutMs = 0, .retryIntervalMs = 0});
    std::atomic<int> written{0};
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&gate, &written, i] {
            while (!update(gate, std::to_string(i))) {
            }
            ++written;
            gate.beginUpdate();
            update(gate, "x" + std::to_string(i));
            EXPECT_TRUE(gate.commitUpdate());
        });
    }
    fs::remove(m_file);
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(written, 4);
    EXPECT_EQ(m_ports.count(kLogWarning, "STORE OPEN"), 1);
}

}  // namespace
}  // namespace vireo
