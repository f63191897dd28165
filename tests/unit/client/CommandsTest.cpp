#include <gtest/gtest.h>

#include <functional>
#include <sstream>
#include <string>
#include <vector>

#include "BusyMask.h"
#include "Commands.h"
#include "JsonPrinter.h"
#include "TextPrinter.h"
#include "unit/client/ScriptedPeer.h"

namespace vireo {
namespace {

using std::chrono::milliseconds;
using Request = std::function<ExitCode(Commands&)>;

struct Outcome {
    ExitCode code = ExitCode::eDone;
    std::string out;
    std::string errors;
};

// Runs a command against a service that gives these replies and expects no further request.
Outcome runAgainst(const std::vector<std::string>& replies, const Request& command, bool json) {
    ScriptedPeer peer([&replies](PeerStream& stream) {
        stream.welcome();
        for (const std::string& reply : replies) {
            stream.reply(reply);
        }
        EXPECT_FALSE(stream.read()) << "one request too many";
    });
    LocalMgmtClient::Options options;
    options.socketPath = peer.socketPath();
    options.timeout = milliseconds(10000);
    std::string error;
    const auto client = LocalMgmtClient::connect(options, error);
    EXPECT_TRUE(client) << error;
    std::ostringstream out;
    std::ostringstream errors;
    TextPrinter text(out, errors);
    JsonPrinter jsonPrinter(out, errors);
    AnswerPrinter& printer = json ? static_cast<AnswerPrinter&>(jsonPrinter) : text;
    Commands commands(*client, printer, errors, options.timeout);
    Outcome outcome;
    outcome.code = command(commands);
    outcome.out = out.str();
    outcome.errors = errors.str();
    return outcome;
}

std::string recordReply(const char* method, bool result, const ManageableData& record) {
    Method reply(method, Method::eResponse);
    reply.addBoolParameter("result", Parameter::eOut, result);
    reply.addStringParameter("manageableData", Parameter::eOut, record.serialize());
    return encoded(reply);
}

std::string textReply(const char* method, const char* parameter, const char* value) {
    Method reply(method, Method::eResponse);
    reply.addStringParameter(parameter, Parameter::eOut, value);
    return encoded(reply);
}

std::string schemaNameReply(const char* name) {
    return textReply("findSchemaName", "schemaName", name);
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
        const Outcome text = runAgainst(row.replies, row.command, false);
        EXPECT_EQ(text.code, row.code) << row.description;
        EXPECT_EQ(text.out, row.out) << row.description;
        EXPECT_EQ(text.errors, row.errors) << row.description;
        const Outcome json = runAgainst(row.replies, row.command, true);
        EXPECT_EQ(json.code, row.code) << row.description;
        EXPECT_EQ(json.out, row.json) << row.description;
    }
}

TEST(Commands, GetPrintsWhatWasReadAndExplainsTheRest) {
    expectRows({
        {"all read, a repeated tag once, values as they are",
         [](Commands& commands) {
             return commands.get({"b", "a", "b"});
         },
         {recordReply("getData", true, recordOf({{"b", "x\n y\"<&"}, {"a", ""}}))},
         ExitCode::eDone,
         "b = x\n y\"<&\na = \n",
         "",
         R"({"result":true,"items":{"b":"x\n y\"<&","a":""},"refusals":[]})"
         "\n"},
        {"an unknown item and one whose owner failed",
         [](Commands& commands) {
             return commands.get({"no", "a", "hung"});
         },
         {recordReply("getData", false, recordOf({{"a", "1"}})), schemaNameReply(""),
          schemaNameReply("hung")},
         ExitCode::eRefused,
         "a = 1\n",
         "no: no value (unknown item)\nhung: no value (it could not be read; the log of the "
         "service says why)\n",
         R"({"result":false,"items":{"a":"1"},"refusals":[])"
         R"x(,"remarks":["no: no value (unknown item)","hung: no value (it could not be read; the log of the service says why)"]})x"
         "\n"},
        {"what is no name is not asked for",
         [](Commands& commands) {
             return commands.get({"a", "*"});
         },
         {},
         ExitCode::eRefused,
         "",
         "*: not an item name\n",
         R"({"result":false,"items":{},"refusals":[{"rootId":"*","path":"//*",)"
         R"("reason":"not an item name"}]})"
         "\n"},
    });
}

TEST(Commands, GetPrintsTheMembersOfCollections) {
    const Request getBoth = [](Commands& commands) {
        return commands.get({"sounds", "other", "b"});
    };
    auto members = recordOf({{"d", "4"}, {"c", "3"}, {"b", "2"}});
    for (const char* collection : {"sounds", "other"}) {
        members.addRootId(collection, nullptr);
    }
    expectRows({
        {"every member once, those asked for by name first",
         getBoth,
         {recordReply("getData", true, members)},
         ExitCode::eDone,
         "b = 2\nc = 3\nd = 4\n",
         "",
         R"({"result":true,"items":{"b":"2","c":"3","d":"4"},"refusals":[]})"
         "\n"},
        {"a collection of which a member failed",
         [](Commands& commands) { return commands.get({"sounds"}); },
         {recordReply("getData", false, recordOf({{"c", "3"}}))},
         ExitCode::eRefused,
         "c = 3\n",
         "read failed: an item could not be read, its value may be old; the log of the service "
         "says why\n",
         R"({"result":false,"items":{"c":"3"},"refusals":[])"
         R"x(,"remarks":["read failed: an item could not be read, its value may be old; the log of the service says why"]})x"
         "\n"},
        {"a collection beside an unknown item",
         getBoth,
         {recordReply("getData", false, members), recordReply("getData", true, members),
          recordReply("getData", false, ManageableData()), schemaNameReply("")},
         ExitCode::eRefused,
         "b = 2\nc = 3\nd = 4\n",
         "other: no value (unknown item)\n",
         R"({"result":false,"items":{"b":"2","c":"3","d":"4"},"refusals":[])"
         R"x(,"remarks":["other: no value (unknown item)"]})x"
         "\n"},
    });
}

TEST(Commands, SetPrintsWhatWasWrittenAndWhatWasNot) {
    const auto both = recordOf({{"a", "1"}, {"b", "2"}});
    const Request setBoth = [](Commands& commands) {
        return commands.set({{"a", "1"}, {"b", "2"}});
    };
    expectRows({
        {"all written",
         setBoth,
         {recordReply("setData", true, both)},
         ExitCode::eDone,
         "a = 1\nb = 2\n",
         "",
         R"({"result":true,"items":{"a":"1","b":"2"},"refusals":[]})"
         "\n"},
        {"one refused, the other known",
         setBoth,
         {recordReply("setData", false, refusing(both, "a", "Service not registered")),
          schemaNameReply("leaf")},
         ExitCode::eRefused,
         "b = 2\n",
         "a: Service not registered\n",
         R"({"result":false,"items":{"b":"2"},"refusals":[{"rootId":"a","path":"//*",)"
         R"("reason":"Service not registered"}]})"
         "\n"},
        {"one unknown, for which the service gives no reason",
         setBoth,
         {recordReply("setData", false, both), schemaNameReply("leaf"), schemaNameReply("")},
         ExitCode::eRefused,
         "a = 1\n",
         "b: not written (unknown item)\n",
         R"({"result":false,"items":{"a":"1"},"refusals":[])"
         R"x(,"remarks":["b: not written (unknown item)"]})x"
         "\n"},
        {"a failure that nothing explains",
         setBoth,
         {recordReply("setData", false, refusing(both, "a", RejectReasonsStrings::initiated)),
          schemaNameReply("leaf")},
         ExitCode::eRefused,
         "",
         "a: Initiated\n"
         "write failed: an item is unknown or its owner refused without a reason\n",
         R"({"result":false,"items":{},"refusals":[{"rootId":"a","path":"//*",)"
         R"("reason":"Initiated"}],"remarks":[)"
         R"("write failed: an item is unknown or its owner refused without a reason"]})"
         "\n"},
        {"nothing is sent when one value cannot be carried",
         [](Commands& commands) {
             return commands.set({{"a", "1"}, {"b", "abc\x01"}, {"a/b", "1"}});
         },
         {},
         ExitCode::eRefused,
         "",
         "b: the value holds byte 0x01 at position 3, which cannot be carried\n"
         "a/b: not an item name\n",
         R"({"result":false,"items":{},"refusals":[{"rootId":"b","path":"//*","reason":)"
         R"("the value holds byte 0x01 at position 3, which cannot be carried"},)"
         R"({"rootId":"a/b","path":"//*","reason":"not an item name"}]})"
         "\n"},
    });
}

TEST(Commands, OneTextAnswersArePrintedAsTheyAreOrAsTheirMethod) {
    expectRows({
        {"schema",
         [](Commands& commands) { return commands.schema("leaf"); },
         {textReply("exportSchema", "schemaXml", "<schema/>")},
         ExitCode::eDone,
         "<schema/>\n",
         "",
         R"({"method":"exportSchema","parameters":{"schemaXml":"<schema/>"}})"
         "\n"},
        {"unknown schema",
         [](Commands& commands) { return commands.schema("no"); },
         {textReply("exportSchema", "schemaXml", "")},
         ExitCode::eRefused,
         "",
         "vireoctl: unknown schema 'no'\n",
         R"({"method":"exportSchema","parameters":{"schemaXml":""}})"
         "\n"},
        {"schema of an unknown item",
         [](Commands& commands) { return commands.schemaOf("no"); },
         {schemaNameReply("")},
         ExitCode::eRefused,
         "",
         "vireoctl: unknown item 'no'\n",
         R"({"method":"findSchemaName","parameters":{"schemaName":""}})"
         "\n"},
        {"no parameters",
         [](Commands& commands) { return commands.invalidateCache(); },
         {encoded(Method("invalidateVCMSCache", Method::eResponse))},
         ExitCode::eDone,
         "",
         "",
         R"({"method":"invalidateVCMSCache","parameters":{}})"
         "\n"},
    });
}

TEST(Commands, CallPrintsEveryParameterOfTheReply) {
    Method reply("limits", Method::eResponse);
    reply.addIntParameter("n", Parameter::eOut, -7);
    reply.addBoolParameter("yes", Parameter::eOut, true);
    reply.addStringParameter("text", Parameter::eOut, "\xFF\"");
    reply.addXMLParameter("xml", Parameter::eOut, "<a/>");
    reply.addIntParameter("n", Parameter::eOut, 8);
    expectRows({
        {"every type",
         [](Commands& commands) { return commands.call("limits", {}); },
         {encoded(reply)},
         ExitCode::eDone,
         "n = -7\nyes = true\ntext = \xFF\"\nxml = <a/>\nn = 8\n",
         "",
         "{\"method\":\"limits\",\"parameters\":{\"n\":-7,\"yes\":true,\"text\":"
         "\"\xEF\xBF\xBD\\\"\""
         ",\"xml\":\"<a/>\"}}\n"},
        {"empty reply",
         [](Commands& commands) { return commands.call("no", {}); },
         {""},
         ExitCode::eRefused,
         "",
         "vireoctl: the service gave an empty reply: it could not serve this request, its log says "
         "why\n",
         "{\"method\":null}\n"},
    });
}

Method busyReply(unsigned mask) {
    Method reply("retrievePhoneBusyStatus", Method::eResponse);
    reply.addIntParameter("busyStatus", Parameter::eOut, static_cast<int>(mask));
    return reply;
}

TEST(Commands, BusyAndLimitsSayWhatTheNumbersMean) {
    expectRows({
        {"nothing keeps it busy",
         [](Commands& commands) { return commands.showBusy(); },
         {encoded(busyReply(0))},
         ExitCode::eDone,
         "busy = 0 (idle)\n",
         "",
         R"({"method":"retrievePhoneBusyStatus","parameters":{"busyStatus":0}})"
         "\n"},
        {"known bits and others",
         [](Commands& commands) { return commands.showBusy(); },
         {encoded(busyReply(0x80000205U))},
         ExitCode::eDone,
         "busy = 2147484165 (1 call, 512 software update, 2147483652 other)\n",
         "",
         R"({"method":"retrievePhoneBusyStatus","parameters":{"busyStatus":2147484165}})"
         "\n"},
        {"a change",
         [](Commands& commands) { return commands.clearBusy(512); },
         {encoded(Method("clearPhoneBusyStatus", Method::eResponse))},
         ExitCode::eDone,
         "",
         "",
         R"({"method":"clearPhoneBusyStatus","parameters":{}})"
         "\n"},
        {"no limit",
         [](Commands& commands) { return commands.limits("midlets"); },
         {textReply("getFileTypeMetadata", "FileTypeMetadata", "-1;15;")},
         ExitCode::eDone,
         "entries = -1 (no limit)\nname characters = 15\n",
         "",
         R"({"method":"getFileTypeMetadata","parameters":{"maxFileTypeEntries":-1,)"
         R"("maxFileTypeNameChars":15}})"
         "\n"},
    });
}

TEST(BusyMask, ReadsWhatAPersonTypesAndNothingElse) {
    const struct {
        const char* argument;
        std::optional<unsigned> mask;
    } rows[] = {
        {"0", 0U},           {"513", 513U},       {"0x201", 513U},    {"0XfF", 255U},
        {"4294967295", ~0U}, {"0xFFFFFFFF", ~0U}, {"", std::nullopt}, {"4294967296", {}},
        {"0x100000000", {}}, {"0x", {}},          {"-1", {}},         {"+1", {}},
        {" 1", {}},          {"1 ", {}},          {"f", {}},
    };
    for (const auto& row : rows) {
        std::string error;
        EXPECT_EQ(BusyMask::parse(row.argument, error), row.mask) << row.argument;
        EXPECT_EQ(error.empty(), row.mask.has_value()) << error;
    }
}

TEST(Commands, WithoutAnAnswerSaysWhyOnStandardErrorAlone) {
    for (const bool json : {false, true}) {
        const Outcome malformed = runAgainst(
            {"x"}, [](Commands& commands) { return commands.get({"a"}); }, json);
        EXPECT_EQ(malformed.code, ExitCode::eRefused);
        EXPECT_EQ(malformed.out, "");
        EXPECT_EQ(malformed.errors, "vireoctl: the reply is malformed\n");

        const Outcome tooLarge = runAgainst(
            {}, [](Commands& commands) { return commands.schema(std::string(5U << 20U, 'x')); },
            json);
        EXPECT_EQ(tooLarge.code, ExitCode::eRefused);
        EXPECT_EQ(tooLarge.out, "");
        EXPECT_EQ(tooLarge.errors, "vireoctl: larger than one message may be\n");
    }
}

}  // namespace
}  // namespace vireo
