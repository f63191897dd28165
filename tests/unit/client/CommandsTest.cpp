#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "Commands.h"
#include "unit/client/CommandOutput.h"
#include "unit/client/ScriptedPeer.h"

namespace vireo {
namespace {

using Request = std::function<ExitCode(Commands&)>;

// Runs a command against a service that gives these replies and expects no further request.
Outcome runAgainst(const std::vector<std::string>& replies, const Request& command, Form form) {
    ScriptedPeer peer([&replies](PeerStream& stream) {
        for (const std::string& reply : replies) {
            stream.reply(reply);
        }
        EXPECT_FALSE(stream.read()) << "one request too many";
    });
    const auto client = connectTo(peer);
    CommandOutput output(form);
    Commands commands(*client, output.printer(), output.errors, kPatience);
    return output.ended(command(commands));
}

std::string schemaNameReply(const char* name) {
    return encoded(textReply("findSchemaName", "schemaName", name));
}

ManageableData recordOf(const std::vector<std::pair<std::string, std::string>>& items) {
    ManageableData record;
    for (const auto& [tag, value] : items) {
        record.populate(tag, tag, value);
    }
    return record;
}

ManageableData refusing(ManageableData record, const char* tag, const char* reason) {
    record.addRejectReason(tag, "//*", reason);
    return record;
}

struct Row {
    const char* description;
    Request command;
    std::vector<std::string> replies;
    ExitCode code;
    const char* out;
    const char* errors;
    const char* json;  // standard output with --json
};

void expectRows(const std::vector<Row>& rows) {
    for (const Row& row : rows) {
        const Outcome text = runAgainst(row.replies, row.command, Form::eLines);
        EXPECT_EQ(text.code, row.code) << row.description;
        EXPECT_EQ(text.out, row.out) << row.description;
        EXPECT_EQ(text.errors, row.errors) << row.description;
        const Outcome json = runAgainst(row.replies, row.command, Form::eJson);
        EXPECT_EQ(json.code, row.code) << row.description;
        EXPECT_EQ(json.out, row.json) << row.description;
    }
}

// What a phone without faults answers is seen in the tests of the program.
TEST(Commands, ExplainWhatAServiceLeavesOpenAndPrintEveryTypeOfParameter) {
    Method reply("limits", Method::eResponse);
    reply.addIntParameter("n", Parameter::eOut, -7);
    reply.addBoolParameter("yes", Parameter::eOut, true);
    reply.addStringParameter("text", Parameter::eOut, "\xFF\"");
    reply.addXMLParameter("xml", Parameter::eOut, "<a/>");
    reply.addIntParameter("n", Parameter::eOut, 8);
    const auto unexplained =
        refusing(recordOf({{"a", "1"}, {"b", "2"}}), "a", RejectReasonsStrings::initiated);
    expectRows({
        {"an unknown item and one whose owner failed",
         [](Commands& commands) {
             return commands.get({"no", "a", "hung"});
         },
         {encoded(recordReply("getData", false, recordOf({{"a", "1"}}).serialize())),
          schemaNameReply(""), schemaNameReply("hung")},
         ExitCode::eRefused,
         "a = 1\n",
         "no: no value (unknown item)\nhung: no value (it could not be read; the log of the "
         "service says why)\n",
         R"({"result":false,"items":{"a":"1"},"refusals":[])"
         R"x(,"remarks":["no: no value (unknown item)","hung: no value (it could not be read; the log of the service says why)"]})x"
         "\n"},
        {"a collection of which a member failed",
         [](Commands& commands) { return commands.get({"sounds"}); },
         {encoded(recordReply("getData", false, recordOf({{"c", "3"}}).serialize()))},
         ExitCode::eRefused,
         "c = 3\n",
         "read failed: an item could not be read, its value may be old; the log of the service "
         "says why\n",
         R"({"result":false,"items":{"c":"3"},"refusals":[])"
         R"x(,"remarks":["read failed: an item could not be read, its value may be old; the log of the service says why"]})x"
         "\n"},
        {"a failure that nothing explains",
         [](Commands& commands) {
             return commands.set({{"a", "1"}, {"b", "2"}});
         },
         {encoded(recordReply("setData", false, unexplained.serialize())), schemaNameReply("leaf")},
         ExitCode::eRefused,
         "",
         "a: Initiated\n"
         "write failed: an item is unknown or its owner refused without a reason\n",
         R"({"result":false,"items":{},"refusals":[{"rootId":"a","path":"//*",)"
         R"("reason":"Initiated"}],"remarks":[)"
         R"("write failed: an item is unknown or its owner refused without a reason"]})"
         "\n"},
        {"every type of parameter",
         [](Commands& commands) { return commands.call("limits", {}); },
         {encoded(reply)},
         ExitCode::eDone,
         "n = -7\nyes = true\ntext = \xFF\"\nxml = <a/>\nn = 8\n",
         "",
         "{\"method\":\"limits\",\"parameters\":{\"n\":-7,\"yes\":true,\"text\":"
         "\"\xEF\xBF\xBD\\\"\",\"xml\":\"<a/>\"}}\n"},
    });
}

TEST(Commands, TellHowFarADownloadIsAndWhetherAFileWasAccepted) {
    const auto status = [](int percent) {
        Method reply("requestCurrentDownloadStatus", Method::eResponse);
        reply.addIntParameter("result", Parameter::eOut, percent);
        return std::vector<std::string>{encoded(reply)};
    };
    const auto validation = [](bool accepted) {
        return std::vector<std::string>{encoded(resultReply("validateFile", accepted))};
    };
    const Request ask = [](Commands& commands) { return commands.downloadStatus("ringer", ""); };
    const Request check = [](Commands& commands) { return commands.validate("ringer", "a.wav"); };
    expectRows({
        {"under way", ask, status(42), ExitCode::eDone, "ringer: 42 %\n", "",
         "{\"method\":\"requestCurrentDownloadStatus\",\"parameters\":{\"result\":42}}\n"},
        {"rejected", ask, status(-3), ExitCode::eRefused, "ringer: failed\n", "",
         "{\"method\":\"requestCurrentDownloadStatus\",\"parameters\":{\"result\":-3}}\n"},
        {"another one", ask, status(-1), ExitCode::eRefused, "ringer: failed, or there was none\n",
         "", "{\"method\":\"requestCurrentDownloadStatus\",\"parameters\":{\"result\":-1}}\n"},
        {"a good file", check, validation(true), ExitCode::eDone, "ringer: a.wav: accepted\n", "",
         "{\"method\":\"validateFile\",\"parameters\":{\"result\":true}}\n"},
        {"a bad file", check, validation(false), ExitCode::eRefused, "ringer: a.wav: rejected\n",
         "", "{\"method\":\"validateFile\",\"parameters\":{\"result\":false}}\n"},
    });
}

// A refusal is not to sound as if a reset had failed.
TEST(Commands, SayWhatTheAnswerToMaintenanceMeansAndShowNoPassword) {
    const auto no = [](const char* method) {
        return std::vector<std::string>{encoded(resultReply(method, false))};
    };
    expectRows({
        {"a reset without reboot",
         [](Commands& commands) {
             return commands.factoryReset([](std::string&) { return "to be kept"; });
         },
         no("performFactoryReset"), ExitCode::eRefused, "",
         "no reboot was started: either the password was refused (a wrong one, none is set, or too "
         "soon after wrong ones) and nothing has changed, or the phone is reset and needs no "
         "reboot; the log of the service says which\n",
         "{\"method\":\"performFactoryReset\",\"parameters\":{\"result\":false}}\n"},
        {"a reset without a password, of which nothing is sent",
         [](Commands& commands) {
             return commands.factoryReset([](std::string& error) {
                 error = "interrupted";
                 return std::nullopt;
             });
         },
         {},
         ExitCode::eRefused,
         "",
         "vireoctl: interrupted\n",
         ""},
        {"no reboot", [](Commands& commands) { return commands.reboot(""); }, no("performReboot"),
         ExitCode::eRefused, "", "no reboot was started; the log of the service says why\n",
         "{\"method\":\"performReboot\",\"parameters\":{\"result\":false}}\n"},
        {"an owner that does not confirm",
         [](Commands& commands) { return commands.resetUserData(); }, no("clearAllUserData"),
         ExitCode::eRefused, "",
         "the user's data are reset, but the owner that was asked last did not say that its items "
         "are, or there is none; the log of the service says more\n",
         "{\"method\":\"clearAllUserData\",\"parameters\":{\"result\":false}}\n"},
    });
}

TEST(Commands, WithoutAnAnswerSayWhyOnStandardErrorAlone) {
    expectRows({
        {"malformed",
         [](Commands& commands) { return commands.get({"a"}); },
         {"x"},
         ExitCode::eRefused,
         "",
         "vireoctl: the reply is malformed\n",
         ""},
        {"too large",
         [](Commands& commands) { return commands.schema(std::string(5U << 20U, 'x')); },
         {},
         ExitCode::eRefused,
         "",
         "vireoctl: larger than one message may be\n",
         ""},
    });
}

}  // namespace
}  // namespace vireo
