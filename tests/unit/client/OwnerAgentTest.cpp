#include <gtest/gtest.h>
#include <unistd.h>

#include <sstream>
#include <string>

#include "OwnerAgent.h"
#include "TextPrinter.h"
#include "terminal/StopSignal.h"
#include "unit/client/ScriptedPeer.h"

namespace vireo {
namespace {

struct Outcome {
    ExitCode code = ExitCode::eDone;
    std::string out;
    std::string errors;
};

// Runs the command against a script that starts behind the registration, which answers
// `registered`; `typed` is its standard input.
Outcome run(OwnerAgent::Options options, bool registered, const std::string& typed,
            const ScriptedPeer::Script& script) {
    ScriptedPeer peer([&](PeerStream& stream) {
        stream.welcome("agent-1");
        stream.reply("");  // does not tell which ids there are
        Method reply("registerManagementIdentityBulkData", Method::eResponse);
        reply.addBoolParameter("result", Parameter::eOut, registered);
        stream.reply(reply);
        script(stream);
        stream.close();
    });
    int input[2];
    EXPECT_EQ(::pipe(input), 0);
    EXPECT_EQ(::write(input[1], typed.data(), typed.size()), static_cast<ssize_t>(typed.size()));
    ::close(input[1]);
    LocalMgmtClient::Options connection;
    connection.socketPath = peer.socketPath();
    std::ostringstream out;
    std::ostringstream errors;
    TextPrinter printer(out, errors);
    const StopSignal stop;
    options.managementId = "Id";
    Outcome outcome;
    outcome.code = OwnerAgent(options, printer, out, errors, stop).run(connection, input[0]);
    outcome.out = out.str();
    outcome.errors = errors.str();
    ::close(input[0]);
    return outcome;
}

std::string written(const ManageableData& record) {
    return "setData:" + record.serialize();
}

TEST(OwnerAgent, PrintsWhatItIsAskedKeepsWhatIsWrittenAndRefusesWhatItShall) {
    const auto outcome = run({{}, {{"a", "1"}}, true, {{"b", "not b"}}, {}, false}, true, "",
                             [](PeerStream& stream) {
                                 ManageableData record;
                                 record.populate("a", "7");
                                 record.populate("b", "8");
                                 std::string reply = stream.askAgent(1, written(record));
                                 record.addRejectReason("b", "//*", "not b");
                                 EXPECT_EQ(reply, "setData:0;" + record.serialize());
                                 ManageableData question;
                                 question.addRootId("a", nullptr);
                                 reply = stream.askAgent(2, "getData:" + question.serialize());
                                 question.populate("a", "7");
                                 EXPECT_EQ(reply, "getData:1;" + question.serialize());
                                 stream.sendToAgent(FrameKind::eNotification, 0, "resetUserData:");
                             });
    EXPECT_EQ(outcome.code, ExitCode::eNotReached);
    EXPECT_EQ(outcome.out, "serving Id as agent-1\nset a = 7\nset b = 8\nget a\nreset-user-data\n");
    EXPECT_EQ(outcome.errors, "vireoctl: the service closed the connection\n");
}

TEST(OwnerAgent, AnnouncesWhatIsTypedAndWarnsThatItIsNotTheFirst) {
    const auto outcome = run({}, false, "a=5\nnonsense\n", [](PeerStream& stream) {
        Method schema("findSchemaName", Method::eResponse);
        schema.addStringParameter("schemaName", Parameter::eOut, "");
        stream.reply(schema);
        const auto announcement = stream.read();
        ASSERT_TRUE(announcement);
        EXPECT_NE(announcement->payload.find("<document name=\"a\" schema=\"a\">5</document>"),
                  std::string::npos);
        Method told("manageableDataChanged", Method::eResponse);
        told.addIntParameter("numObservers", Parameter::eOut, 2);
        told.addStringParameter("manageableData", Parameter::eOut, "<record></record>");
        stream.send(FrameKind::eReply, announcement->header.correlation, encoded(told));
        ManageableData question;
        question.addRootId("a", nullptr);
        const std::string reply = stream.askAgent(1, "getData:" + question.serialize());
        question.populate("a", "5");
        EXPECT_EQ(reply, "getData:1;" + question.serialize());
    });
    EXPECT_EQ(outcome.out,
              "serving Id as agent-1\nannounced a = 5 (messages to observers: 2)\nget a\n");
    EXPECT_NE(outcome.errors.find("warning: Id has an owner already"), std::string::npos);
    EXPECT_NE(outcome.errors.find("'nonsense' is not TAG=VALUE"), std::string::npos);
}

}  // namespace
}  // namespace vireo
