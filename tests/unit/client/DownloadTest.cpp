#include <gtest/gtest.h>

#include <sstream>
#include <string>

#include "Download.h"
#include "service/Serializer.h"
#include "terminal/StopSignal.h"
#include "unit/client/CommandOutput.h"
#include "unit/client/ScriptedPeer.h"

namespace vireo {
namespace {

// Runs the command against a script of the service.
Outcome run(const Download::Options& options, const ScriptedPeer::Script& script, Form form) {
    ScriptedPeer peer(script);
    CommandOutput output(form);
    const StopSignal stop;
    return output.ended(
        Download(options, output.printer(), output.errors).run(optionsFor(peer), stop));
}

// Takes the start by this method, and gives the bytes of its answer.
std::string startReply(PeerStream& stream, const std::string& method, bool result) {
    return frame(FrameKind::eReply, stream.take({";" + method + "0;"}),
                 encoded(resultReply(method + "Response", result)));
}

// Tells the client each of the words: a number is progress, a path a completion.
void tell(PeerStream& stream, const std::string& words) {
    std::istringstream all(words);
    for (std::string word; all >> word;) {
        std::string text;
        if (word.front() == '/') {
            Serializer::serialize(text, "informDownloadCompletion");
            Serializer::serialize(text, word);
        } else {
            Serializer::serialize(text, "informDownloadProgress");
            Serializer::serialize(text, std::stoi(word));
            Serializer::serialize(text, "/data/f");
        }
        stream.write(callbackFrame(FrameKind::eNotification, 0, text));
    }
}

constexpr const char* kByItems = "startDownloadWithFileTypeAndCallback";
constexpr const char* kNotFetched =
    "vireoctl: the file was not fetched (the log of the service says why), or is too large or not "
    "playable\n";
constexpr const char* kNotBurnt =
    "vireoctl: the image was fetched, but not burnt; the log of the service says why\n";
constexpr const char* kBurnt =
    "vireoctl: the next start of the phone tries the new software, after 'vireoctl reboot' for "
    "instance\n";
constexpr int kNotAsked = -100;

struct Row {
    const char* description;
    const char* type;
    const char* before;  // what is told before the start is answered
    int statusAsked;     // what the service answers when it is asked; kNotAsked: it must not be
    const char* after;   // and what behind it
    const char* out;
    const char* errors;
};

void play(const Row& row, PeerStream& stream) {
    const std::string reply = startReply(stream, kByItems, true);
    tell(stream, row.before);
    stream.write(reply);
    if (row.statusAsked != kNotAsked) {
        Method status("requestCurrentDownloadStatus", Method::eResponse);
        status.addIntParameter("result", Parameter::eOut, row.statusAsked);
        stream.send(FrameKind::eReply, stream.take({";requestCurrentDownloadStatus0;"}),
                    encoded(status));
    }
    tell(stream, row.after);
    EXPECT_FALSE(stream.read()) << row.description << ": one request too many";
}

TEST(Download, FollowsItsOwnDownloadToTheEnd) {
    const Row rows[] = {
        {"a line for each change", "ringer", "0", kNotAsked, "0 12 12 99 /data/r.wav",
         "0 %\n12 %\n99 %\nringer: /data/r.wav\n", ""},
        {"told before the answer, in parts", "ringer", "40", kNotAsked, "/r", "40 %\nringer: /r\n",
         ""},
        {"rejected", "ldap", "", kNotAsked, "50 -3", "0 %\n50 %\nldap: failed\n", kNotFetched},
        {"a transfer that failed", "ldap", "", kNotAsked, "-1", "0 %\nldap: failed\n", kNotFetched},
        {"an image, to the end of its burn", "swBind", "", kNotAsked, "99 /i 0 50 99",
         "0 %\n99 %\nburning 0 %\nburning 50 %\nswBind: /i\n", kBurnt},
        {"an image that cannot be burnt", "swBind", "", kNotAsked, "/i -3", "0 %\nswBind: failed\n",
         kNotBurnt},
        {"an end of its own before the answer", "ringer", "0 /r", 100, "", "ringer: /r\n", ""},
        {"a failure of its own before the answer", "ringer", "-1", -1, "", "ringer: failed\n",
         kNotFetched},
        {"the end of another one before the answer", "ringer", "70 /old", 0, "3 /new",
         "0 %\n3 %\nringer: /new\n", ""},
        {"the failure of another one, and the beginning of its own", "ringer", "-1 5", kNotAsked,
         "-3", "5 %\nringer: failed\n", kNotFetched},
    };
    for (const Row& row : rows) {
        const Outcome outcome = run(
            {.type = row.type, .source = {}}, [&row](PeerStream& stream) { play(row, stream); },
            Form::eLines);
        EXPECT_EQ(outcome.out, row.out) << row.description;
        EXPECT_EQ(outcome.errors, row.errors) << row.description;
        EXPECT_EQ(outcome.code,
                  outcome.out.ends_with("failed\n") ? ExitCode::eRefused : ExitCode::eDone)
            << row.description;
    }
}

TEST(Download, DrawsABarOnATerminalAndPrintsObjectsForPrograms) {
    const auto script = [](PeerStream& stream) {
        stream.write(startReply(stream, kByItems, true));
        tell(stream, "50 /i 0 -1");
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
        stream.write(startReply(stream, kByItems, true));
        tell(stream, "/r");
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
    } rows[] = {
        {{.type = "logo", .source = {}, .wait = false}, "startDownloadWithFileType", true},
        {{.type = "logo", .source = source, .wait = false},
         "startDownloadWithManyParamsAndCallback",
         true},
        {{.type = "logo", .source = source}, "startDownloadWithManyParamsAndCallback", false},
        {{.type = "logo", .source = {}}, kByItems, false},
    };
    for (const auto& row : rows) {
        const auto script = [&row](PeerStream& stream) {
            // What is told is of one that goes on, not of this one.
            const std::string reply = startReply(stream, row.method, row.started);
            tell(stream, "7 /other");
            stream.write(reply);
            EXPECT_FALSE(stream.read()) << row.method;
        };
        const Outcome lines = run(row.options, script, Form::eLines);
        EXPECT_EQ(lines.out, row.started ? "logo: started\n" : "logo: not started\n");
        EXPECT_EQ(lines.code, row.started ? ExitCode::eDone : ExitCode::eRefused) << row.method;
        EXPECT_EQ(lines.errors.empty(), row.started) << lines.errors;
        const std::string state = row.started ? "started" : "refused";
        EXPECT_EQ(run(row.options, script, Form::eJson).out,
                  R"({"download":"logo","state":")" + state + "\"}\n");
    }
}

TEST(Download, AllowsAShutdownWhileItFetchesAndNotWhileItBurns) {
    const Outcome outcome = run(
        {.type = "swBind", .source = {}},
        [](PeerStream& stream) {
            stream.write(startReply(stream, kByItems, true));
            const auto ask = [&stream](std::uint32_t number) {
                stream.write(callbackFrame(FrameKind::eRequest, number, "15;requestShutdown"));
                const auto answer = stream.read();
                return answer ? answer->payload : "nothing";
            };
            EXPECT_EQ(ask(1), "15;requestShutdown4;true");
            tell(stream, "/i");
            EXPECT_EQ(ask(2), "15;requestShutdown5;false");
            tell(stream, "0");
            EXPECT_EQ(ask(3), "15;requestShutdown5;false");
            stream.close();
        },
        Form::eLines);
    EXPECT_EQ(outcome.code, ExitCode::eNotReached);
    EXPECT_EQ(outcome.out, "0 %\nburning 0 %\n");
    EXPECT_EQ(outcome.errors, "vireoctl: the service closed the connection\n");
}

}  // namespace
}  // namespace vireo
