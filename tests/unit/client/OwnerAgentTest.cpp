#include <gtest/gtest.h>
#include <unistd.h>

#include <string>

#include "OwnerAgent.h"
#include "terminal/StopSignal.h"
#include "unit/client/CommandOutput.h"
#include "unit/client/ScriptedPeer.h"

namespace vireo {
namespace {

// That it serves, keeps and refuses what is written is seen in the tests of the program.
TEST(OwnerAgent, AnnouncesWhatIsTypedAndWarnsThatItIsNotTheFirst) {
    ScriptedPeer peer([](PeerStream& stream) {
        stream.reply("");  // does not tell which ids there are
        stream.reply(resultReply("registerManagementIdentityBulkData", false));
        stream.reply(textReply("findSchemaName", "schemaName", ""));
        stream.send(FrameKind::eReply,
                    stream.take({"<document name=\"a\" schema=\"a\">5</document>"}),
                    encoded(announcedReply(2)));
        ManageableData question;
        question.addRootId("a", nullptr);
        const std::string reply = stream.askAgent(1, "getData:" + question.serialize());
        question.populate("a", "5");
        EXPECT_EQ(reply, "getData:1;" + question.serialize());
    });
    int input[2];
    ASSERT_EQ(::pipe(input), 0);
    ASSERT_EQ(::write(input[1], "a=5\nnonsense\n", 13), 13);
    ::close(input[1]);
    CommandOutput output(Form::eLines);
    const StopSignal stop;
    OwnerAgent agent({"Id", {}, false, {}, {}, false}, output.printer(), output.out, output.errors,
                     stop);
    EXPECT_EQ(agent.run(optionsFor(peer), input[0]), ExitCode::eNotReached);
    ::close(input[0]);
    EXPECT_EQ(output.out.str(),
              "serving Id as client-1\nannounced a = 5 (messages to observers: 2)\nget a\n");
    const std::string errors = output.errors.str();
    EXPECT_NE(errors.find("warning: Id has an owner already"), std::string::npos) << errors;
    EXPECT_NE(errors.find("'nonsense' is not TAG=VALUE"), std::string::npos) << errors;
}

}  // namespace
}  // namespace vireo
