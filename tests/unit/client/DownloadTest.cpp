#include <gtest/gtest.h>

#include <csignal>
#include <functional>
#include <sstream>
#include <string>
#include <vector>

#include "Download.h"
#include "JsonPrinter.h"
#include "TextPrinter.h"
#include "service/Serializer.h"
#include "terminal/StopSignal.h"
#include "unit/client/ScriptedPeer.h"

namespace vireo {
namespace {

struct Outcome {
    ExitCode code = ExitCode::eDone;
    std::string out;
    std::string errors;
};

enum class Form { eLines, eTerminal, eJson };

// Runs the command against a script that begins behind the welcome.
Outcome run(const Download::Options& options, const ScriptedPeer::Script& script, Form form) {
    ScriptedPeer peer([&script](PeerStream& stream) {
        stream.welcome("download-1");
        script(stream);
    });
    LocalMgmtClient::Options connection;
    connection.socketPath = peer.socketPath();
    std::ostringstream out;
    std::ostringstream errors;
    TextPrinter text(out, errors, form == Form::eTerminal);
    JsonPrinter json(out, errors);
    AnswerPrinter& printer = form == Form::eJson ? static_cast<AnswerPrinter&>(json) : text;
    const StopSignal stop;
    Outcome outcome;
    outcome.code = Download(options, printer, errors).run(connection, stop);
    outcome.out = out.str();
    outcome.errors = errors.str();
    return outcome;
}

// Takes the next request, which is to be of this method, and gives the bytes of its answer.
std::string answerTo(PeerStream& stream, const std::string& method, const std::string& replyName,
                     const std::function<void(Method&)>& fill) {
    const auto request = stream.read();
    if (!request) {
        ADD_FAILURE() << "no " << method;
        return {};
    }
    EXPECT_NE(request->payload.find(";" + method + "0;"), std::string::npos) << request->payload;
    Method reply(replyName, Method::eResponse);
    fill(reply);
    return frame(FrameKind::eReply, request->header.correlation, encoded(reply));
}

std::string startReply(PeerStream& stream, const std::string& method, bool result) {
    return answerTo(stream, method, method + "Response", [result](Method& reply) {
        reply.addBoolParameter("result", Parameter::eOut, result);
    });
}

std::string progress(int percent) {
    std::string text;
    Serializer::serialize(text, "informDownloadProgress");
    Serializer::serialize(text, percent);
    Serializer::serialize(text, "/data/f");
    return callbackFrame(FrameKind::eNotification, 0, text);
}

std::string completion(const char* path) {
    std::string text;
    Serializer::serialize(text, "informDownloadCompletion");
    Serializer::serialize(text, path);
    return callbackFrame(FrameKind::eNotification, 0, text);
}

constexpr const char* kByItems = "startDownloadWithFileTypeAndCallback";
constexpr const char* kNotFetched =
    "vireoctl: the file was not fetched (the log of the service says why), or is too large or not "
    "playable\n";
constexpr const char* kNotBurnt =
    "vireoctl: the image was fetched, but not burnt; the log of the service says why\n";

// What is told before the start is answered, and after it.
struct Row {
    const char* description;
    const char* type;
    std::vector<std::string> before;
    int statusAsked;  // what the service answers when it is asked; kNotAsked: it must not be
    std::vector<std::string> after;
    ExitCode code;
    const char* out;
    const char* errors;
};

constexpr int kNotAsked = -100;

void tell(PeerStream& stream, const std::vector<std::string>& frames) {
    for (const std::string& each : frames) {
        stream.sendBytes(each);
    }
}

void play(const Row& row, PeerStream& stream) {
    const std::string reply = startReply(stream, kByItems, true);
    tell(stream, row.before);
    stream.sendBytes(reply);
    if (row.statusAsked != kNotAsked) {
        const char* const method = "requestCurrentDownloadStatus";
        stream.sendBytes(answerTo(stream, method, method, [&row](Method& status) {
            status.addIntParameter("result", Parameter::eOut, row.statusAsked);
        }));
    }
    tell(stream, row.after);
    EXPECT_FALSE(stream.read()) << row.description << ": one request too many";
}

TEST(Download, FollowsItsOwnDownloadToTheEnd) {
    const Row rows[] = {
        {"a line for each change",
         "ringer",
         {progress(0)},
         kNotAsked,
         {progress(0), progress(12), progress(12), progress(99), completion("/data/r.wav")},
         ExitCode::eDone,
         "0 %\n12 %\n99 %\nringer: /data/r.wav\n",
         ""},
        {"told before the answer, in parts",
         "ringer",
         {progress(40)},
         kNotAsked,
         {completion("/r")},
         ExitCode::eDone,
         "40 %\nringer: /r\n",
         ""},
        {"rejected",
         "ldap",
         {},
         kNotAsked,
         {progress(50), progress(-3)},
         ExitCode::eRefused,
         "0 %\n50 %\nldap: failed\n",
         kNotFetched},
        {"a transfer that failed",
         "ldap",
         {},
         kNotAsked,
         {progress(-1)},
         ExitCode::eRefused,
         "0 %\nldap: failed\n",
         kNotFetched},
        {"an image, to the end of its burn",
         "swBind",
         {},
         kNotAsked,
         {progress(99), completion("/i"), progress(0), progress(50), progress(99)},
         ExitCode::eDone,
         "0 %\n99 %\nburning 0 %\nburning 50 %\nswBind: /i\n",
         ""},
        {"an image that cannot be burnt",
         "swBind",
         {},
         kNotAsked,
         {completion("/i"), progress(-3)},
         ExitCode::eRefused,
         "0 %\nswBind: failed\n",
         kNotBurnt},
        {"an end of its own before the answer",
         "ringer",
         {progress(0), completion("/r")},
         100,
         {},
         ExitCode::eDone,
         "ringer: /r\n",
         ""},
        {"a failure of its own before the answer",
         "ringer",
         {progress(-1)},
         -1,
         {},
         ExitCode::eRefused,
         "ringer: failed\n",
         kNotFetched},
        {"the end of another one before the answer",
         "ringer",
         {progress(70), completion("/old")},
         0,
         {progress(3), completion("/new")},
         ExitCode::eDone,
         "0 %\n3 %\nringer: /new\n",
         ""},
        {"the failure of another one, and the beginning of its own",
         "ringer",
         {progress(-1), progress(5)},
         kNotAsked,
         {progress(-3)},
         ExitCode::eRefused,
         "5 %\nringer: failed\n",
         kNotFetched},
    };
    for (const Row& row : rows) {
        const Outcome outcome = run(
            {.type = row.type, .source = {}}, [&row](PeerStream& stream) { play(row, stream); },
            Form::eLines);
        EXPECT_EQ(outcome.code, row.code) << row.description;
        EXPECT_EQ(outcome.out, row.out) << row.description;
        EXPECT_EQ(outcome.errors, row.errors) << row.description;
    }
}

TEST(Download, DrawsABarOnATerminalAndPrintsObjectsForPrograms) {
    const auto script = [](PeerStream& stream) {
        stream.sendBytes(startReply(stream, kByItems, true));
        tell(stream, {progress(50), completion("/i"), progress(0), progress(-1)});
    };
    const Download::Options options{.type = "swBind", .source = {}};
    const std::string half(20, '#');
    const std::string none(20, '.');
    EXPECT_EQ(run(options, script, Form::eTerminal).out,
              "\rswBind: [" + none + none + "] 0 %\x1b[K" + "\rswBind: [" + half + none +
                  "] 50 %\x1b[K" + "\rswBind: burning [" + none + none + "] 0 %\x1b[K" +
                  "\r\x1b[KswBind: failed\n");
    EXPECT_EQ(run(options, script, Form::eJson).out,
              "{\"download\":\"swBind\",\"state\":\"fetching\",\"percent\":0}\n"
              "{\"download\":\"swBind\",\"state\":\"fetching\",\"percent\":50}\n"
              "{\"download\":\"swBind\",\"state\":\"burning\",\"percent\":0}\n"
              "{\"download\":\"swBind\",\"state\":\"failed\"}\n");
    const auto done = [](PeerStream& stream) {
        stream.sendBytes(startReply(stream, kByItems, true));
        tell(stream, {completion("/r")});
    };
    EXPECT_EQ(run({.type = "ringer", .source = {}}, done, Form::eJson).out,
              "{\"download\":\"ringer\",\"state\":\"fetching\",\"percent\":0}\n"
              "{\"download\":\"ringer\",\"state\":\"done\",\"file\":\"/r\"}\n");
}

TEST(Download, StartsInTheFormThatItsOptionsAskForAndSaysWhenItIsNotStarted) {
    const LocalMgmtClient::DownloadSource source;
    const struct {
        Download::Options options;
        const char* method;
        bool started;
        ExitCode code;
        const char* out;
        const char* json;
    } rows[] = {
        {{.type = "logo", .source = {}, .wait = false},
         "startDownloadWithFileType",
         true,
         ExitCode::eDone,
         "logo: started\n",
         "{\"download\":\"logo\",\"state\":\"started\"}\n"},
        {{.type = "logo", .source = source, .wait = false},
         "startDownloadWithManyParamsAndCallback",
         true,
         ExitCode::eDone,
         "logo: started\n",
         "{\"download\":\"logo\",\"state\":\"started\"}\n"},
        {{.type = "logo", .source = source},
         "startDownloadWithManyParamsAndCallback",
         false,
         ExitCode::eRefused,
         "logo: not started\n",
         "{\"download\":\"logo\",\"state\":\"refused\"}\n"},
        {{.type = "logo", .source = {}},
         kByItems,
         false,
         ExitCode::eRefused,
         "logo: not started\n",
         "{\"download\":\"logo\",\"state\":\"refused\"}\n"},
    };
    for (const auto& row : rows) {
        for (const Form form : {Form::eLines, Form::eJson}) {
            const Outcome outcome = run(
                row.options,
                [&row](PeerStream& stream) {
                    // Of one that goes on; it is not this one's.
                    const std::string reply = startReply(stream, row.method, row.started);
                    tell(stream, {progress(7), completion("/other")});
                    stream.sendBytes(reply);
                    EXPECT_FALSE(stream.read()) << row.method;
                },
                form);
            EXPECT_EQ(outcome.code, row.code) << row.method;
            EXPECT_EQ(outcome.out, form == Form::eJson ? row.json : row.out) << row.method;
            EXPECT_EQ(outcome.errors.empty(), row.started) << outcome.errors;
        }
    }
}

TEST(Download, AllowsAShutdownWhileItFetchesAndNotWhileItBurns) {
    const Outcome outcome = run(
        {.type = "swBind", .source = {}},
        [](PeerStream& stream) {
            stream.sendBytes(startReply(stream, kByItems, true));
            const auto ask = [&stream](std::uint32_t number) {
                stream.sendBytes(callbackFrame(FrameKind::eRequest, number, "15;requestShutdown"));
                const auto answer = stream.read();
                return answer ? answer->payload : "nothing";
            };
            EXPECT_EQ(ask(1), "15;requestShutdown4;true");
            tell(stream, {completion("/i")});
            EXPECT_EQ(ask(2), "15;requestShutdown5;false");
            tell(stream, {progress(0)});
            EXPECT_EQ(ask(3), "15;requestShutdown5;false");
            stream.close();
        },
        Form::eLines);
    EXPECT_EQ(outcome.code, ExitCode::eNotReached);
    EXPECT_EQ(outcome.out, "0 %\nburning 0 %\n");
    EXPECT_EQ(outcome.errors, "vireoctl: the service closed the connection\n");
}

// The signal goes to the whole process, as Ctrl-C does, and waits to be read.
TEST(Download, GoesOnWithoutThisProgramWhenASignalComes) {
    const StopSignal blocked;
    const Outcome outcome = run(
        {.type = "ringer", .source = {}},
        [](PeerStream& stream) {
            stream.sendBytes(startReply(stream, kByItems, true));
            tell(stream, {progress(33)});
            ::kill(::getpid(), SIGINT);
            EXPECT_FALSE(stream.read());
        },
        Form::eLines);
    sigset_t stops;
    sigemptyset(&stops);
    sigaddset(&stops, SIGINT);
    int taken = 0;
    ::sigwait(&stops, &taken);  // or every later test would see it
    EXPECT_EQ(outcome.code, ExitCode::eRefused);
    EXPECT_EQ(outcome.errors,
              "vireoctl: the download goes on; 'vireoctl download-status ringer' says how far it "
              "is\n");
}

}  // namespace
}  // namespace vireo
