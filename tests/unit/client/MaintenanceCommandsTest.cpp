#include <gtest/gtest.h>

#include <sstream>

#include "Commands.h"
#include "JsonPrinter.h"
#include "TextPrinter.h"
#include "unit/client/ScriptedPeer.h"

namespace vireo {
namespace {

constexpr const char* kSecret = "to be kept";

std::optional<std::string> given(std::string& /*error*/) {
    return kSecret;
}

TEST(MaintenanceCommands, SayWhatTheAnswerMeansAndNeverThatAResetFailed) {
    using Command = std::function<ExitCode(Commands&)>;
    const struct {
        const char* method;
        const char* parameter;
        const char* value;
        bool result;
        Command command;
        const char* out;
        const char* errors;  // begins like this
    } rows[] = {
        {"performFactoryReset", "password", kSecret, true,
         [](Commands& commands) { return commands.factoryReset(given); },
         "the phone is reset and reboots\n", ""},
        {"performFactoryReset", "password", kSecret, false,
         [](Commands& commands) { return commands.factoryReset(given); }, "",
         "no reboot was started: either the password was refused"},
        {"performReboot", "rebootReason", "new server", true,
         [](Commands& commands) { return commands.reboot("new server"); }, "the phone reboots\n",
         ""},
        {"performReboot", "rebootReason", "", false,
         [](Commands& commands) { return commands.reboot(""); }, "", "no reboot was started;"},
        {"clearAllUserData", nullptr, "", true,
         [](Commands& commands) { return commands.resetUserData(); }, "the user's data are reset\n",
         ""},
        {"clearAllUserData", nullptr, "", false,
         [](Commands& commands) { return commands.resetUserData(); }, "",
         "the user's data are reset, but the owner that was asked last did not say"},
    };
    for (const bool json : {false, true}) {
        for (const auto& row : rows) {
            SCOPED_TRACE(std::string(row.method) + (row.result ? " yes" : " no"));
            ScriptedPeer peer([&row](PeerStream& stream) {
                stream.welcome();
                const auto request = stream.read();
                ASSERT_TRUE(request);
                Method expected(row.method, Method::eRequest);
                if (row.parameter != nullptr) {
                    expected.addStringParameter(row.parameter, Parameter::eIn, row.value);
                }
                EXPECT_EQ(request->payload, encoded(expected));
                Method reply(row.method, Method::eResponse);
                reply.addBoolParameter("result", Parameter::eOut, row.result);
                stream.send(FrameKind::eReply, request->header.correlation, encoded(reply));
                EXPECT_FALSE(stream.read()) << "one request too many";
            });
            auto client = connectTo(peer);
            std::ostringstream out;
            std::ostringstream errors;
            TextPrinter text(out, errors);
            JsonPrinter jsonPrinter(out, errors);
            AnswerPrinter& printer = json ? static_cast<AnswerPrinter&>(jsonPrinter) : text;
            Commands commands(*client, printer, errors, kPatience);
            EXPECT_EQ(row.command(commands), row.result ? ExitCode::eDone : ExitCode::eRefused);
            EXPECT_EQ(out.str(), json ? std::string("{\"method\":\"") + row.method +
                                            "\",\"parameters\":{\"result\":" +
                                            (row.result ? "true" : "false") + "}}\n"
                                      : row.out);
            EXPECT_TRUE(errors.str().starts_with(row.errors)) << errors.str();
            EXPECT_EQ(errors.str().empty(), row.result);
            EXPECT_EQ((out.str() + errors.str()).find("failed"), std::string::npos);
            EXPECT_EQ((out.str() + errors.str()).find(kSecret), std::string::npos);
        }
    }
}

TEST(MaintenanceCommands, WithoutAPasswordNothingIsSent) {
    ScriptedPeer peer([](PeerStream& stream) {
        stream.welcome();
        EXPECT_FALSE(stream.read());
    });
    auto client = connectTo(peer);
    std::ostringstream out;
    TextPrinter printer(out, out);
    Commands commands(*client, printer, out, kPatience);
    EXPECT_EQ(commands.factoryReset([](std::string& error) {
        error = "interrupted";
        return std::nullopt;
    }),
              ExitCode::eRefused);
    EXPECT_EQ(out.str(), "vireoctl: interrupted\n");
}

}  // namespace
}  // namespace vireo
