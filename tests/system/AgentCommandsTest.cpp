#include "MgmtAgentIfc.h"
#include "support/RunningPhone.h"

namespace vireo::test {
namespace {

std::vector<std::string> command(const RunningPhone& phone, std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), {VIREOCTL, "--socket", phone.socket()});
    return arguments;
}

std::string nextLine(ChildProcess& process) {
    std::string line;
    return process.readLine(line) ? line : "the end";
}

// Says that the item has changed until somebody is told of it.
void announceUntilSeen(const RunningPhone& phone, const std::string& tag) {
    const auto client = phone.connect();
    for (int observers = 0; observers == 0;) {
        ManageableData record;
        record.populate(tag, "seen");
        ASSERT_EQ(client->manageableDataChanged(record, observers), CallStatus::eDone);
    }
}

TEST(AgentCommands, AnIdThatNobodyCanOwnIsRefusedAndNotRegistered) {
    const RunningPhone phone;
    for (const std::string id : {"NoSuchId", "VcmsMgmtId"}) {
        const Outcome refused = phone.ctl({"agent", id});
        EXPECT_EQ(refused.exitCode, 1);
        EXPECT_EQ(refused.out, "");
        EXPECT_TRUE(refused.err.starts_with(
            "vireoctl: no item that an agent can own has the management id '" + id +
            "'; there are: BluetoothMgmtId, "))
            << refused.err;
    }
}

TEST(AgentCommands, AnOwnerAnswersRefusesEndsAndComesBackWhileAWatcherIsTold) {
    RunningPhone phone;
    const auto owner = command(phone, {"agent", "NetworkMgmtId", "--refuse", "host-name=fixed"});
    ChildProcess first(owner);
    EXPECT_EQ(nextLine(first), "serving NetworkMgmtId as agent-1");
    ChildProcess watcher(command(phone, {"watch", "vlan-id", "host-name"}));
    announceUntilSeen(phone, "vlan-id");
    EXPECT_EQ(nextLine(watcher), "vlan-id = seen");

    EXPECT_EQ(phone.ctl({"get", "vlan-id"}).out, "vlan-id = none\n") << "the default of its schema";
    EXPECT_EQ(nextLine(first), "get vlan-id");
    const Outcome written = phone.ctl({"set", "host-name=x", "vlan-id=7"});
    EXPECT_EQ(written.out, "vlan-id = 7\n");
    EXPECT_EQ(written.err, "host-name: fixed\n");
    EXPECT_EQ(nextLine(first), "set host-name = x");
    EXPECT_EQ(nextLine(first), "set vlan-id = 7");
    EXPECT_EQ(nextLine(watcher), "vlan-id = 7") << "and nothing of what was refused";
    EXPECT_EQ(phone.ctl({"get", "vlan-id"}).out, "vlan-id = 7\n");

    first.kill(SIGTERM);
    EXPECT_EQ(first.finish().exitCode, 0);
    EXPECT_EQ(phone.ctl({"get", "vlan-id"}).err,
              "vlan-id: no value (it could not be read; the log of the service says why)\n");
    ChildProcess second(owner);
    EXPECT_EQ(nextLine(second), "serving NetworkMgmtId as agent-1");
    EXPECT_EQ(phone.ctl({"get", "vlan-id"}).out, "vlan-id = none\n") << "nothing is kept for it";

    watcher.kill(SIGINT);
    EXPECT_EQ(watcher.finish().exitCode, 0);
    const auto client = phone.connect();
    ManageableData record;
    record.populate("vlan-id", "8");
    int observers = 1;
    EXPECT_EQ(client->manageableDataChanged(record, observers), CallStatus::eDone);
    EXPECT_EQ(observers, 0) << "the watcher has stopped observing";

    phone.crash();
    const Outcome ended = second.finish();
    EXPECT_EQ(ended.exitCode, 3);
    EXPECT_NE(ended.err.find("has an owner already"), std::string::npos);
}

}  // namespace
}  // namespace vireo::test
