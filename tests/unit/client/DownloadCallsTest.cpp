#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "LocalMgmtClient.h"
#include "messages/ServiceXmlAdapter.h"
#include "unit/client/ScriptedPeer.h"

namespace vireo {
namespace {

using std::chrono::milliseconds;
using Protocol = LocalMgmtClient::Protocol;

constexpr milliseconds kPatience{10000};

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
                                             LocalMgmtCallbackIfc* callback,
                                             Protocol protocol = Protocol::eRpc) {
    std::string error;
    LocalMgmtClient::Options options;
    options.socketPath = peer.socketPath();
    options.timeout = kPatience;
    options.protocol = protocol;
    options.callback = callback;
    auto client = LocalMgmtClient::connect(options, error);
    EXPECT_TRUE(client) << error;
    return client;
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
const Call kStartWithCallback = [](LocalMgmtClient& client, bool& result) {
    return client.startDownloadWithCallback(LocalMgmtIfc::FILETYPE_SOFTWARE, result);
};
const Call kStartFrom = [](LocalMgmtClient& client, bool& result) {
    return client.startDownloadFrom(source(), LocalMgmtIfc::FILETYPE_RINGER, true, result);
};
const Call kFetchFrom = [](LocalMgmtClient& client, bool& result) {
    return client.fetchFrom(source(), LocalMgmtIfc::FILETYPE_RINGER, result);
};
const Call kStatus = [](LocalMgmtClient& client, bool& result) {
    int percent = 0;
    const CallStatus status =
        client.requestCurrentDownloadStatus(LocalMgmtIfc::FILETYPE_RINGER, "a", percent);
    result = percent == -3;
    return status;
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

constexpr const char* kSourceBytes =
    "16;downloadProtocol0;0;2;4;port1;0;4;84436;server1;0;4;host8;username1;0;2;me8;password1;0;3;"
    "s;18;filetype0;0;11;10;sourcepath1;0;3;dir8;filename1;0;7;a b.wav";

// `result` is what the call gives when it is done.
struct CallRow {
    const Call& call;
    std::string request;
    std::string reply;
    CallStatus status;
    bool result;
};

TEST(DownloadCalls, SendWhatTheyAreGivenAndTakeTheReplyOfTheirNameAlone) {
    const std::string from = kSourceBytes;
    const CallRow rows[] = {
        {kStart, "25;startDownloadWithFileType0;1;8;filetype0;0;3;",
         "33;startDownloadWithFileTypeResponse1;1;6;result2;1;1;", CallStatus::eDone, true},
        {kStart, "25;startDownloadWithFileType0;1;8;filetype0;0;3;",
         "33;startDownloadWithFileTypeResponse1;1;6;result2;1;0;", CallStatus::eDone, false},
        {kStart, "25;startDownloadWithFileType0;1;8;filetype0;0;3;",
         "25;startDownloadWithFileType1;1;6;result2;1;1;", CallStatus::eMalformedReply, false},
        {kStart, "25;startDownloadWithFileType0;1;8;filetype0;0;3;", "", CallStatus::eEmptyReply,
         false},
        {kStartWithCallback, "36;startDownloadWithFileTypeAndCallback0;1;8;filetype0;0;1;",
         "44;startDownloadWithFileTypeAndCallbackResponse1;1;6;result2;1;1;", CallStatus::eDone,
         true},
        {kStartFrom,
         "38;startDownloadWithManyParamsAndCallback0;9;" + from + "12;overrideBusy2;0;1;",
         "46;startDownloadWithManyParamsAndCallbackResponse1;1;6;result2;1;1;", CallStatus::eDone,
         true},
        {kFetchFrom, "27;startDownloadWithManyParams0;8;" + from,
         "35;startDownloadWithManyParamsResponse1;1;6;result2;1;1;", CallStatus::eDone, true},
        {kStatus, "28;requestCurrentDownloadStatus0;2;8;filetype0;0;11;8;filename1;0;1;a",
         "28;requestCurrentDownloadStatus1;1;6;result0;1;-3;", CallStatus::eDone, true},
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
        ScriptedPeer peer([&row](PeerStream& stream) {
            stream.welcome();
            const auto request = stream.read();
            ASSERT_TRUE(request) << row.request;
            EXPECT_EQ(request->payload, row.request);
            stream.send(FrameKind::eReply, request->header.correlation, row.reply);
        });
        NotingCallback callback;
        const auto client = connectWith(peer, &callback);
        bool result = false;
        EXPECT_EQ(row.call(*client, result), row.status) << row.request;
        EXPECT_EQ(result, row.result) << row.request;
    }
}

TEST(DownloadCalls, ThatWantACallbackAreNotSentWithoutOne) {
    ScriptedPeer peer([](PeerStream& stream) {
        stream.welcome();
        EXPECT_FALSE(stream.read());
    });
    const auto client = connectWith(peer, nullptr);
    bool result = false;
    EXPECT_EQ(kStartWithCallback(*client, result), CallStatus::eNoCallback);
    EXPECT_EQ(kStartFrom(*client, result), CallStatus::eNoCallback);
    EXPECT_STREQ(describe(CallStatus::eNoCallback), "the client has no callback");
}

TEST(DownloadCalls, NameAFileInXmlAsThisProtocolWantsIt) {
    const std::string reply =
        "<response name=\"validateFile\"><param name=\"Acknowledge\" "
        "type=\"string\" dir=\"1\">";
    ScriptedPeer peer([&reply](PeerStream& stream) {
        stream.welcome();
        const auto request = stream.read();
        ASSERT_TRUE(request);
        EXPECT_EQ(request->payload,
                  "<request name=\"validateFile\"><param name=\"FileSelection\" type=\"xml\" "
                  "dir=\"0\"><type>11</type><name>a&amp;&lt;b&gt;</name></param></request>");
        stream.send(FrameKind::eReply, request->header.correlation,
                    reply + "SUCCESS</param></response>");
        stream.reply(reply + "ERROR_General</param></response>");
        EXPECT_FALSE(stream.read()) << "what cannot be carried must not be sent";
    });
    const auto client = connectWith(peer, nullptr, Protocol::eXml);
    bool accepted = false;
    EXPECT_EQ(kValidate(*client, accepted), CallStatus::eDone);
    EXPECT_TRUE(accepted);
    EXPECT_EQ(kValidate(*client, accepted), CallStatus::eDone);
    EXPECT_FALSE(accepted);
    EXPECT_EQ(client->validateFile(LocalMgmtIfc::FILETYPE_RINGER, "a\x01", accepted),
              CallStatus::eNotCarried);
}

// Each message is asked, so that its answer shows that it was served.
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
        {progress + "4;/a/b", "", progress + "5;false", {}},
        {progress, "", progress + "5;false", {}},
        {completion + "-1;", "", completion + "5;false", {}},
        {"7;restart", "", "7;restart5;false", {}},
        {"16;requestShutdown", "", "0;5;false", {}},
        {"requestShutdown", "", "0;5;false", {}},
        {"", "", "0;5;false", {}},
    };
    for (const auto& row : rows) {
        ScriptedPeer peer([&row](PeerStream& stream) {
            stream.welcome();
            stream.sendBytes(callbackFrame(FrameKind::eNotification, 0, row.message));
            stream.sendBytes(callbackFrame(FrameKind::eRequest, 7, row.message));
            const auto reply = stream.read();
            ASSERT_TRUE(reply) << row.message;
            EXPECT_EQ(reply->header.kind, FrameKind::eReply);
            EXPECT_EQ(reply->header.correlation, 7U);
            EXPECT_EQ(reply->payload, row.reply) << row.message;
        });
        NotingCallback callback;
        callback.shutdownAnswer = row.shutdownAnswer;
        const auto client = connectWith(peer, &callback);
        while (client->serve(kPatience) == CallStatus::eDone) {
        }
        std::vector<std::string> twice = row.told;
        twice.insert(twice.end(), row.told.begin(), row.told.end());
        EXPECT_EQ(callback.told, twice) << row.message;
    }
}

TEST(DownloadCallback, HearsOfItsDownloadWhileACallWaitsAndNobodyElsesMessages) {
    ScriptedPeer peer([](PeerStream& stream) {
        stream.welcome();
        const auto call = stream.read();
        ASSERT_TRUE(call);
        stream.sendBytes(
            callbackFrame(FrameKind::eNotification, 0, "22;informDownloadProgress1;1;p"));
        EXPECT_EQ(stream.askAgent(1, "resetUserData:"), "") << "there is no agent";
        std::string bytes;
        FrameCodec::append(bytes, FrameKind::eRequest, 2, "vireo_rpc", "LocalMgmtCallbackIfc",
                           "15;requestShutdown");
        stream.sendBytes(bytes);
        const auto nothing = stream.read();
        ASSERT_TRUE(nothing);
        EXPECT_EQ(nothing->payload, "") << "another protocol";
        stream.send(FrameKind::eReply, call->header.correlation,
                    "33;startDownloadWithFileTypeResponse1;1;6;result2;1;1;");
    });
    NotingCallback callback;
    const auto client = connectWith(peer, &callback);
    bool started = false;
    EXPECT_EQ(kStart(*client, started), CallStatus::eDone);
    EXPECT_EQ(callback.told, std::vector<std::string>{"1 p"});

    ScriptedPeer other([](PeerStream& stream) {
        stream.welcome();
        stream.sendBytes(callbackFrame(FrameKind::eRequest, 1, "15;requestShutdown"));
        const auto nothing = stream.read();
        ASSERT_TRUE(nothing);
        EXPECT_EQ(nothing->payload, "") << "there is no callback";
    });
    const auto withoutCallback = connectWith(other, nullptr);
    while (withoutCallback->serve(kPatience) == CallStatus::eDone) {
    }
}

}  // namespace
}  // namespace vireo
