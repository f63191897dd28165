#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "LocalMgmtClient.h"
#include "messages/CallbackText.h"
#include "unit/client/ScriptedPeer.h"

namespace vireo {
namespace {

/// Puts down what it is told; answers no to paths that are "no", and throws at those of "throw".
class NotingCallback : public LocalMgmtCallbackIfc {
public:
    bool requestShutdown() override { return take("shutdown", shutdownAnswer); }
    bool informDownloadProgress(int progress, std::string filepath) override {
        return take(std::to_string(progress) + " ", filepath);
    }
    bool informDownloadCompletion(std::string filepath) override {
        return take("complete ", filepath);
    }

    std::string shutdownAnswer;
    std::vector<std::string> told;

private:
    bool take(const std::string& what, const std::string& path) {
        told.push_back(what + path);
        if (path == "throw") {
            throw std::runtime_error("as it was told");
        }
        if (path == "throw 7") {
            throw 7;
        }
        return path != "no";
    }
};

std::unique_ptr<LocalMgmtClient> connectWith(const ScriptedPeer& peer,
                                             LocalMgmtCallbackIfc& callback) {
    LocalMgmtClient::Options options = optionsFor(peer);
    options.callback = &callback;
    return connectBy(options);
}

LocalMgmtClient::DownloadSource source() {
    LocalMgmtClient::DownloadSource source;
    source.protocol = LocalMgmtIfc::DOWNLOAD_HTTPS;
    source.server = "host";
    source.port = "8443";
    source.userName = "me";
    source.password = "s;1";
    source.sourcePath = "dir";
    source.fileName = "a b.wav";
    return source;
}

using Call = std::function<CallStatus(LocalMgmtClient&, bool& result)>;

const Call kStart = [](LocalMgmtClient& client, bool& result) {
    return client.startDownload(LocalMgmtIfc::FILETYPE_PICTURE, result);
};
const Call kStartFrom = [](LocalMgmtClient& client, bool& result) {
    return client.startDownloadFrom(source(), LocalMgmtIfc::FILETYPE_RINGER, true, result);
};
const Call kPath = [](LocalMgmtClient& client, bool& result) {
    std::string path = "/x/";
    const CallStatus status = client.getFilePathFromType("ringer", path, result);
    result = result && path == "/x/ringtones/";
    return status;
};
const Call kValidate = [](LocalMgmtClient& client, bool& result) {
    return client.validateFile(LocalMgmtIfc::FILETYPE_RINGER, "a&<b>", result);
};
const Call kRefresh = [](LocalMgmtClient& client, bool& /*result*/) {
    return client.refreshPictureClips();
};

// `result` is what the call gives when it is done.
struct CallRow {
    const Call& call;
    std::string request;
    std::string reply;
    CallStatus status;
    bool result;
};

// The others, as a phone answers them, are seen in the tests of the program.
TEST(DownloadCalls, SendWhatTheyAreGivenAndTakeTheReplyOfTheirNameAlone) {
    const CallRow rows[] = {
        {kStart, "25;startDownloadWithFileType0;1;8;filetype0;0;3;",
         "33;startDownloadWithFileTypeResponse1;1;6;result2;1;1;", CallStatus::eDone, true},
        {kStart, "25;startDownloadWithFileType0;1;8;filetype0;0;3;",
         "25;startDownloadWithFileType1;1;6;result2;1;1;", CallStatus::eMalformedReply, false},
        {kStart, "25;startDownloadWithFileType0;1;8;filetype0;0;3;", "", CallStatus::eEmptyReply,
         false},
        {kStartFrom,
         "38;startDownloadWithManyParamsAndCallback0;9;16;downloadProtocol0;0;2;4;port1;0;4;8443"
         "6;server1;0;4;host8;username1;0;2;me8;password1;0;3;s;18;filetype0;0;11;"
         "10;sourcepath1;0;3;dir8;filename1;0;7;a b.wav12;overrideBusy2;0;1;",
         "46;startDownloadWithManyParamsAndCallbackResponse1;1;6;result2;1;1;", CallStatus::eDone,
         true},
        {kPath, "19;getFilePathFromType0;2;8;filename1;2;3;/x/8;filetype1;0;6;ringer",
         "19;getFilePathFromType1;2;6;result2;1;1;8;filename1;1;13;/x/ringtones/",
         CallStatus::eDone, true},
        {kPath, "19;getFilePathFromType0;2;8;filename1;2;3;/x/8;filetype1;0;6;ringer",
         "19;getFilePathFromType1;1;6;result2;1;1;", CallStatus::eMalformedReply, false},
        {kValidate, "12;validateFile0;2;8;fileType0;0;11;8;filename1;0;5;a&<b>",
         "12;validateFile1;1;6;result2;1;1;", CallStatus::eDone, true},
        {kRefresh, "19;refreshPictureClips0;0;", "19;refreshPictureClips1;0;", CallStatus::eDone,
         false},
    };
    for (const CallRow& row : rows) {
        ScriptedPeer peer([&row](PeerStream& stream) { stream.expect(row.request, row.reply); });
        NotingCallback callback;
        const auto client = connectWith(peer, callback);
        bool result = false;
        EXPECT_EQ(row.call(*client, result), row.status) << row.request;
        EXPECT_EQ(result, row.result) << row.request;
    }
}

TEST(DownloadCalls, NameAFileInXmlAsThisProtocolWantsIt) {
    const std::string reply =
        "<response name=\"validateFile\"><param name=\"Acknowledge\" "
        "type=\"string\" dir=\"1\">";
    ScriptedPeer peer([&reply](PeerStream& stream) {
        stream.expect(
            "<request name=\"validateFile\"><param name=\"FileSelection\" type=\"xml\" "
            "dir=\"0\"><type>11</type><name>a&amp;&lt;b&gt;</name></param></request>",
            reply + "SUCCESS</param></response>");
        stream.reply(reply + "ERROR_General</param></response>");
        EXPECT_FALSE(stream.read()) << "what cannot be carried must not be sent";
    });
    const auto client = connectTo(peer, nullptr, LocalMgmtClient::Protocol::eXml);
    bool accepted = false;
    EXPECT_EQ(kValidate(*client, accepted), CallStatus::eDone);
    EXPECT_TRUE(accepted);
    EXPECT_EQ(kValidate(*client, accepted), CallStatus::eDone);
    EXPECT_FALSE(accepted);
    EXPECT_EQ(client->validateFile(LocalMgmtIfc::FILETYPE_RINGER, "a\x01", accepted),
              CallStatus::eNotCarried);
}

TEST(DownloadCallback, IsCalledAsTheMessageSaysAndAnythingElseIsAnsweredWithFalse) {
    constexpr const char* kShutdown = "15;requestShutdown";
    const std::string progress = "22;informDownloadProgress";
    const std::string completion = "24;informDownloadCompletion";
    const struct {
        std::string message;
        std::string shutdownAnswer;
        std::string reply;
        std::vector<std::string> told;
    } rows[] = {
        {progress + "42;4;/a/b", "", progress + "4;true", {"42 /a/b"}},
        {progress + "-3;0;", "", progress + "4;true", {"-3 "}},
        {completion + "4;a\nb;", "", completion + "4;true", {"complete a\nb;"}},
        {completion + "2;no", "", completion + "5;false", {"complete no"}},
        {completion + "5;throw", "", completion + "5;false", {"complete throw"}},
        {progress + "1;7;throw 7", "", progress + "5;false", {"1 throw 7"}},
        {kShutdown, "", kShutdown + std::string("4;true"), {"shutdown"}},
        {kShutdown, "no", kShutdown + std::string("5;false"), {"shutdownno"}},
        {kShutdown, "throw", kShutdown + std::string("5;false"), {"shutdownthrow"}},
        {kShutdown + std::string("0;"), "", kShutdown + std::string("5;false"), {}},
        {progress + "42;4;/a/", "", progress + "5;false", {}},
        {progress + "42;4;/a/bc", "", progress + "5;false", {}},
        {progress, "", progress + "5;false", {}},
        {completion + "-1;", "", completion + "5;false", {}},
        {"7;restart", "", "7;restart5;false", {}},
        {"requestShutdown", "", "0;5;false", {}},
        {"", "", "0;5;false", {}},
    };
    for (const auto& row : rows) {
        NotingCallback callback;
        callback.shutdownAnswer = row.shutdownAnswer;
        std::string reply = "of an earlier message";
        CallbackText::serve(callback, row.message, reply);
        EXPECT_EQ(reply, row.reply) << row.message;
        EXPECT_EQ(callback.told, row.told) << row.message;
    }
}

TEST(DownloadCallback, HearsOfItsDownloadWhileACallWaitsAndNobodyElsesMessages) {
    ScriptedPeer peer([](PeerStream& stream) {
        const auto call = stream.read();
        ASSERT_TRUE(call);
        stream.write(callbackFrame(FrameKind::eNotification, 0, "22;informDownloadProgress1;1;p"));
        stream.write(PeerStream::frame(FrameKind::eRequest, 2, "15;requestShutdown", "vireo_rpc",
                                       "LocalMgmtCallbackIfc"));
        const auto nothing = stream.read();
        ASSERT_TRUE(nothing);
        EXPECT_EQ(nothing->payload, "") << "another protocol";
        stream.send(FrameKind::eReply, call->correlation,
                    "33;startDownloadWithFileTypeResponse1;1;6;result2;1;1;");
    });
    NotingCallback callback;
    const auto client = connectWith(peer, callback);
    bool started = false;
    EXPECT_EQ(kStart(*client, started), CallStatus::eDone);
    EXPECT_EQ(callback.told, std::vector<std::string>{"1 p"});
}

}  // namespace
}  // namespace vireo
