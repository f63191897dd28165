#include "support/ItemCalls.h"
#include "support/RunningPhone.h"

namespace vireo::test {
namespace {

struct Step {
    std::vector<std::string> arguments;
    int exitCode;
    std::string out;
    std::string errPart;
};

Step step(std::vector<std::string> arguments, int exitCode, std::string out, std::string errPart) {
    return {std::move(arguments), exitCode, std::move(out), std::move(errPart)};
}

TEST(Vireoctl, DoesWhatAnAdministratorTypes) {
    RunningPhone phone;
    const std::vector<Step> steps{
        step({"get", "language", "ringer-melody", "language"}, 0,
             "language = en\nringer-melody = melody-1\n", ""),
        step({"get", "audio-volumes", "ringer-volume"}, 0,
             "ringer-volume = 5\nalert-volume = 5\nhandset-volume = 5\nheadset-volume = "
             "5\nspeaker-volume = 5\n",
             ""),
        step({"get", "audio-volumes", "nothing"}, 1,
             "alert-volume = 5\nhandset-volume = 5\nheadset-volume = 5\nringer-volume = 5\n"
             "speaker-volume = 5\n",
             "nothing: no value (unknown item)\n"),
        step({"get", "ringer-melody", "*"}, 1, "", "*: not an item name\n"),
        step({"--json", "set", "country=AT", "nothing=1"}, 1,
             "{\"result\":false,\"items\":{\"country\":\"AT\"},\"refusals\":[],"
             "\"remarks\":[\"nothing: not written (unknown item)\"]}\n",
             ""),
        step({"set", "ringer-melody=a=b", "key-label-1=Home"}, 0,
             "ringer-melody = a=b\nkey-label-1 = Home\n", ""),
        step({"get", "ringer-melody", "nothing", "key-label-1"}, 1,
             "ringer-melody = a=b\nkey-label-1 = Home\n", "nothing: "),
        step({"--json", "get", "ringer-melody"}, 0,
             "{\"result\":true,\"items\":{\"ringer-melody\":\"a=b\"},\"refusals\":[]}\n", ""),
        step({"set", "ringer-volume=", "vlan-id=7"}, 1, "ringer-volume = \n",
             "vlan-id: Service not registered"),
        step({"--json", "set", "vlan-id=7"}, 1,
             "{\"result\":false,\"items\":{},\"refusals\":[{\"rootId\":\"vlan-id\","
             "\"path\":\"//*\",\"reason\":\"Service not registered\"}]}\n",
             ""),
        step({"set", "ringer-melody=never", "language=ab\x01", "a/b=1"}, 1, "",
             "language: the value holds byte 0x01 at position 2, which cannot be carried\n"
             "a/b: not an item name\n"),
        step({"get", "ringer-melody"}, 0, "ringer-melody = a=b\n", ""),
        step({"schema-of", "ringer-melody"}, 0, "text\n", ""),
        step({"--json", "schema-of", "nothing"}, 1,
             "{\"method\":\"findSchemaName\",\"parameters\":{\"schemaName\":\"\"}}\n",
             "vireoctl: unknown item 'nothing'\n"),
        step({"schema", "text"}, 0, "<schema name=\"text\" type=\"string\"></schema>\n", ""),
        step({"schema", "nothing"}, 1, "", "unknown schema 'nothing'"),
        step({"invalidate-cache"}, 0, "", ""),
        step({"call", "findSchemaName", "nodeId:string=ringer-melody"}, 0, "schemaName = text\n",
             ""),
        step({"--json", "call", "findSchemaName", "nodeId:string=ringer-melody"}, 0,
             "{\"method\":\"findSchemaName\",\"parameters\":{\"schemaName\":\"text\"}}\n", ""),
        step({"call", "noSuchMethod"}, 1, "", "the service gave an empty reply"),
        step({"--json", "call", "noSuchMethod"}, 1, "{\"method\":null}\n", ""),
        step({"busy"}, 0, "busy = 0 (idle)\n", ""),
        step({"busy", "set", "0x80000205"}, 0, "", ""),
        step({"--protocol", "xml", "busy", "show"}, 0,
             "busy = 2147484165 (1 call, 512 software update, 2147483652 other)\n", ""),
        step({"--json", "busy"}, 0,
             "{\"method\":\"retrievePhoneBusyStatus\",\"parameters\":{\"busyStatus\":"
             "2147484165}}\n",
             ""),
        step({"get", "phone-busy-status"}, 0, "phone-busy-status = true\n", ""),
        step({"busy", "clear", "0x80000205"}, 0, "", ""),
        step({"get", "phone-busy-status"}, 0, "phone-busy-status = false\n", ""),
        step({"--json", "busy", "clear", "1"}, 0,
             "{\"method\":\"clearPhoneBusyStatus\",\"parameters\":{}}\n", ""),
        step({"--json", "--protocol", "xml", "busy"}, 0,
             "{\"method\":\"retrievePhoneBusyStatus\",\"parameters\":{\"busyStatus\":0}}\n", ""),
        step({"busy", "set"}, 2, "", "needs the bits"),
        step({"busy", "show", "1"}, 2, "", "takes no bits"),
        step({"busy", "set", "-1"}, 2, "", "-1"),
        step({"busy", "toggle"}, 2, "", "toggle"),
        step({"limits", "midlets"}, 0, "entries = -1 (no limit)\nname characters = 15\n", ""),
        step({"--json", "limits", "midlets"}, 0,
             "{\"method\":\"getFileTypeMetadata\",\"parameters\":{\"maxFileTypeEntries\":-1,"
             "\"maxFileTypeNameChars\":15}}\n",
             ""),
        step({"--protocol", "xml", "limits", "images"}, 0, "entries = 20\nname characters = 15\n",
             ""),
        step({"limits", "Images"}, 2, "", "screensaver"),
        step({"--protocol", "xml", "call", "getFileTypeMetadata", "FileType:string=logo"}, 0,
             "Acknowledge = SUCCESS\nFileTypeMetadata = <maxFileTypeEntries>0</maxFileTypeEntries>"
             "<maxFileTypeNameChars>0</maxFileTypeNameChars>\n",
             ""),
        step({"--protocol", "xml", "set", "ringer-melody=a & b\r\n"}, 0,
             "ringer-melody = a & b\r\n\n", ""),
        step({"--protocol", "xml", "get", "ringer-melody"}, 0, "ringer-melody = a & b\r\n\n", ""),
        step({"--json", "get", "ringer-melody"}, 0,
             "{\"result\":true,\"items\":{\"ringer-melody\":\"a & b\\r\\n\"},\"refusals\":[]}\n",
             ""),
        step({"--protocol", "xml", "call", "findSchemaName", "nodeId:string=\x01"}, 1, "",
             "cannot carry"),
        step({"--protocol", "yaml", "get", "ringer-melody"}, 2, "", "yaml"),
        step({"call", "findSchemaName", "nodeId:int=x"}, 2, "", "nodeId"),
        step({"frobnicate"}, 2, "", "frobnicate"),
        step({"get"}, 2, "", ""),
        step({"--channel", "bad name", "get", "ringer-melody"}, 3, "",
             "a channel name has letters"),
    };
    for (const Step& step : steps) {
        std::string line;
        for (const std::string& word : step.arguments) {
            line += " " + word;
        }
        SCOPED_TRACE("vireoctl" + line);
        const Outcome outcome = phone.ctl(step.arguments);
        EXPECT_EQ(outcome.exitCode, step.exitCode) << outcome.err;
        if (step.exitCode != 2) {
            EXPECT_EQ(outcome.out, step.out);
        }
        EXPECT_NE(outcome.err.find(step.errPart), std::string::npos) << outcome.err;
        if (step.errPart.empty() && step.exitCode == 0) {
            EXPECT_EQ(outcome.err, "");
        }
    }
}

TEST(Vireoctl, SaysWhenTheServiceIsNotThere) {
    RunningPhone phone;
    phone.crash();
    const Outcome outcome = phone.ctl({"get", "ringer-melody"});
    EXPECT_EQ(outcome.exitCode, 3);
    EXPECT_NE(outcome.err.find(phone.socket()), std::string::npos) << outcome.err;
}

TEST(Vireod, SaysWhyItCannotStart) {
    RunningPhone phone;
    const auto start = [&](const std::vector<std::string>& arguments) {
        std::vector<std::string> command{VIREOD, "--config", VIREO_CONFIG};
        command.insert(command.end(), arguments.begin(), arguments.end());
        return ChildProcess::run(command);
    };
    Outcome outcome = start({"--root", phone.file("r2"), "--socket", phone.socket()});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_NE(outcome.err.find(phone.socket()), std::string::npos) << outcome.err;
    outcome = start({"--root", phone.root(), "--socket", phone.file("run2/s")});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_NE(outcome.err.find(phone.root()), std::string::npos) << outcome.err;
    outcome = start({"--root", phone.file("r3"), "--socket", phone.file("run3/s"), "--plugin",
                     phone.file("none.so")});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_NE(outcome.err.find("none.so"), std::string::npos) << outcome.err;
    EXPECT_EQ(start({"--no-such-option"}).exitCode, 2);
    EXPECT_EQ(phone.ctl({"get", "ringer-melody"}).exitCode, 0) << "the first one is unharmed";
    phone.stop();
}

std::string nextLine(ChildProcess& process) {
    std::string line;
    return process.readLine(line) ? line : "the end";
}

// Says that the item has changed until somebody is told of it.
void announceUntilSeen(const RunningPhone& phone, const std::string& tag) {
    const auto client = phone.connect();
    while (announceItems(*client, {tag + "=seen"}) == 0) {
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
    ChildProcess first(phone.ctlCommand({"agent", "NetworkMgmtId", "--refuse", "host-name=fixed"}));
    EXPECT_EQ(nextLine(first), "serving NetworkMgmtId as agent-1");
    ChildProcess watcher(phone.ctlCommand({"watch", "vlan-id", "host-name"}));
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
    writeFile(phone.file("values"), "dns-domain=home\n");
    ChildProcess second(
        phone.ctlCommand({"agent", "NetworkMgmtId", "--values", phone.file("values")}));
    EXPECT_EQ(nextLine(second), "serving NetworkMgmtId as agent-1");
    EXPECT_EQ(phone.ctl({"get", "vlan-id", "dns-domain"}).out,
              "vlan-id = none\ndns-domain = home\n")
        << "nothing is kept for it";

    watcher.kill(SIGINT);
    EXPECT_EQ(watcher.finish().exitCode, 0);
    EXPECT_EQ(announceItems(*phone.connect(), {"vlan-id=8"}), 0)
        << "the watcher has stopped observing";

    phone.crash();
    const Outcome ended = second.finish();
    EXPECT_EQ(ended.exitCode, 3);
    EXPECT_NE(ended.err.find("has an owner already"), std::string::npos);
}

}  // namespace
}  // namespace vireo::test
