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
    const auto client = connectTo(peer);
    std::ostringstream out;
    std::ostringstream errors;
    TextPrinter text(out, errors);
    JsonPrinter jsonPrinter(out, errors);
    AnswerPrinter& printer = json ? static_cast<AnswerPrinter&>(jsonPrinter) : text;
    Commands commands(*client, printer, errors, kPatience);
    Outcome outcome;
    outcome.code = command(commands);
    outcome.out = out.str();
    outcome.errors = errors.str();
    return outcome;
}

std::string schemaNameReply(const char* name) {
    Method reply("findSchemaName", Method::eResponse);
    reply.addStringParameter("schemaName", Parameter::eOut, name);
    return encoded(reply);
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
        return encoded(reply);
    };
    const auto validation = [](bool accepted) {
        Method reply("validateFile", Method::eResponse);
        reply.addBoolParameter("result", Parameter::eOut, accepted);
        return encoded(reply);
    };
    const Request ask = [](Commands& commands) { return commands.downloadStatus("ringer", ""); };
    const Request check = [](Commands& commands) { return commands.validate("ringer", "a.wav"); };
    const std::string json = "{\"method\":\"requestCurrentDownloadStatus\",\"parameters\":";
    const std::string running = json + "{\"result\":42}}\n";
    const std::string failed = json + "{\"result\":-3}}\n";
    const std::string none = json + "{\"result\":-1}}\n";
    expectRows({
        {"under way", ask, {status(42)}, ExitCode::eDone, "ringer: 42 %\n", "", running.c_str()},
        {"rejected", ask, {status(-3)}, ExitCode::eRefused, "ringer: failed\n", "", failed.c_str()},
        {"another one",
         ask,
         {status(-1)},
         ExitCode::eRefused,
         "ringer: failed, or there was none\n",
         "",
         none.c_str()},
        {"a good file",
         check,
         {validation(true)},
         ExitCode::eDone,
         "ringer: a.wav: accepted\n",
         "",
         "{\"method\":\"validateFile\",\"parameters\":{\"result\":true}}\n"},
        {"a bad file",
         check,
         {validation(false)},
         ExitCode::eRefused,
         "ringer: a.wav: rejected\n",
         "",
         "{\"method\":\"validateFile\",\"parameters\":{\"result\":false}}\n"},
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
