#include "support/RunningPhone.h"

namespace vireo::test {
namespace {

struct Step {
    std::vector<std::string> arguments;
    int exitCode;
    std::string out;
    std::string errPart;
};

TEST(Vireoctl, DoesWhatAnAdministratorTypes) {
    RunningPhone phone;
    const std::vector<Step> steps{
        {{"get", "ringer-melody"}, 0, "ringer-melody = melody-1\n", ""},
        {{"set", "ringer-melody=a=b", "key-label-1=Home"},
         0,
         "ringer-melody = a=b\nkey-label-1 = Home\n",
         ""},
        {{"get", "ringer-melody", "nothing", "key-label-1"},
         1,
         "ringer-melody = a=b\nkey-label-1 = Home\n",
         "nothing: "},
        {{"--json", "get", "ringer-melody"},
         0,
         "{\"result\":true,\"items\":{\"ringer-melody\":\"a=b\"},\"refusals\":[]}\n",
         ""},
        {{"set", "ringer-volume=", "vlan-id=7"},
         1,
         "ringer-volume = \n",
         "vlan-id: Service not registered"},
        {{"--json", "set", "vlan-id=7"},
         1,
         "{\"result\":false,\"items\":{},\"refusals\":[{\"rootId\":\"vlan-id\","
         "\"path\":\"//*\",\"reason\":\"Service not registered\"}]}\n",
         ""},
        {{"set", "*=1"}, 1, "", "not an item name"},
        {{"set", "ringer-melody=\x01"}, 1, "", "byte 0x01 at position 0"},
        {{"get", "ringer-melody"}, 0, "ringer-melody = a=b\n", ""},
        {{"schema-of", "ringer-melody"}, 0, "text\n", ""},
        {{"schema-of", "nothing"}, 1, "", "nothing"},
        {{"schema", "text"}, 0, "<schema name=\"text\" type=\"string\"></schema>\n", ""},
        {{"schema", "nothing"}, 1, "", "nothing"},
        {{"invalidate-cache"}, 0, "", ""},
        {{"call", "findSchemaName", "nodeId:string=ringer-melody"}, 0, "schemaName = text\n", ""},
        {{"--json", "call", "findSchemaName", "nodeId:string=ringer-melody"},
         0,
         "{\"method\":\"findSchemaName\",\"parameters\":{\"schemaName\":\"text\"}}\n",
         ""},
        {{"--json", "call", "noSuchMethod"}, 1, "{\"method\":null}\n", ""},
        {{"busy"}, 0, "busy = 0 (idle)\n", ""},
        {{"busy", "set", "0x201"}, 0, "", ""},
        {{"--protocol", "xml", "busy", "show"},
         0,
         "busy = 513 (1 call, 512 software update)\n",
         ""},
        {{"busy", "clear", "513"}, 0, "", ""},
        {{"--json", "--protocol", "xml", "busy"},
         0,
         "{\"method\":\"retrievePhoneBusyStatus\",\"parameters\":{\"busyStatus\":0}}\n",
         ""},
        {{"busy", "set"}, 2, "", "needs the bits"},
        {{"busy", "show", "1"}, 2, "", "takes no bits"},
        {{"busy", "set", "-1"}, 2, "", "-1"},
        {{"busy", "toggle"}, 2, "", "toggle"},
        {{"limits", "midlets"}, 0, "entries = -1 (no limit)\nname characters = 15\n", ""},
        {{"--protocol", "xml", "limits", "images"}, 0, "entries = 20\nname characters = 15\n", ""},
        {{"limits", "Images"}, 2, "", "screensaver"},
        {{"--protocol", "xml", "call", "getFileTypeMetadata", "FileType:string=logo"},
         0,
         "Acknowledge = SUCCESS\nFileTypeMetadata = <maxFileTypeEntries>0</maxFileTypeEntries>"
         "<maxFileTypeNameChars>0</maxFileTypeNameChars>\n",
         ""},
        {{"--protocol", "xml", "set", "ringer-melody=a & b\r\n"},
         0,
         "ringer-melody = a & b\r\n\n",
         ""},
        {{"--protocol", "xml", "get", "ringer-melody"}, 0, "ringer-melody = a & b\r\n\n", ""},
        {{"--protocol", "xml", "call", "findSchemaName", "nodeId:string=\x01"},
         1,
         "",
         "cannot carry"},
        {{"--protocol", "yaml", "get", "ringer-melody"}, 2, "", "yaml"},
        {{"call", "findSchemaName", "nodeId:int=x"}, 2, "", "nodeId"},
        {{"frobnicate"}, 2, "", "frobnicate"},
        {{"get"}, 2, "", ""},
        {{"--channel", "bad name", "get", "ringer-melody"}, 3, "", "a channel name has letters"},
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
    phone.process->kill(SIGTERM);
    EXPECT_EQ(phone.process->finish().exitCode, 0);
}

}  // namespace
}  // namespace vireo::test
