#include <cstdlib>

#include "messages/RpcAdapter.h"
#include "service/Method.h"
#include "service/Serializer.h"
#include "support/AgentPeer.h"
#include "support/FramePeer.h"
#include "support/HttpsServer.h"
#include "support/ProcessState.h"
#include "system/DownloadFixture.h"

namespace vireo::test {
namespace {

class DownloadEndings : public DownloadSystem {
protected:
    void restart(const std::vector<std::string>& options) {
        phone.crash();
        phone.start(options);
    }
    /// The names that a user would find in a directory of the storage.
    std::vector<std::string> listed(const std::string& directory) const {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(stored(directory))) {
            if (!entry.path().filename().string().starts_with('.')) {
                names.push_back(entry.path().filename());
            }
        }
        return names;
    }
};

TEST_F(DownloadEndings, ObserversSeeThePhoneBusyOnceWhateverTheEnding) {
    restart({"--stall-timeout-ms", "500"});
    AgentPeer observer(phone, "observer");
    ASSERT_TRUE(observer.observe("phone-busy-status"));
    ASSERT_TRUE(observer.client().startServing());
    put("half.png", std::string(300'000, 'h'));
    const struct {
        const char* type;
        std::vector<std::string> settings;
        const char* status;
        long hold = 0;
        bool isKilled = false;
    } rows[] = {{"images", {"dl-pic-file=large.png"}, "2"},
                {"images", {"dl-pic-file=none.png"}, "2"},
                {"images", {"dl-pic-file=small.png", "dl-ftp-password=wrong"}, "2"},
                {"images", {"dl-pic-file=small.png", "dl-ftp-port=1"}, "2"},
                {"images", {"dl-pic-file=half.png"}, "2", 150'000, true},
                {"images", {"dl-pic-file=half.png"}, "2", 150'000},
                {"ringer", {"dl-rng-file=cut.wav"}, "2"},
                {"swBind", {"dl-app-file=foreign"}, "2"},
                {"images", {"dl-pic-file=small.png"}, "1"}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.settings.back() + (row.isKilled ? ", killed" : ""));
        serve(row.hold);
        set(row.settings);
        ASSERT_EQ(phone.ctl({"download", row.type, "--no-wait"}).exitCode, 0);
        if (row.isKilled) {
            waitForHalf(row.type);
            endServer();
        }
        EXPECT_EQ(observer.waitForTranscript(2),
                  (Words{"told phone-busy-status=512", "told phone-busy-status=0"}));
        const std::string infix = row.settings.front().substr(0, 7);
        EXPECT_EQ(valueOf(infix + "last-status"), row.status);
        EXPECT_EQ(phone.ctl({"busy"}).out, "busy = 0 (idle)\n");
    }
    EXPECT_EQ(listed("images"), std::vector<std::string>{"small.png"});
    EXPECT_TRUE(listed("ringtones").empty());
}

TEST_F(DownloadEndings, NothingIsListedBeforeItIsCompleteAndADefaultKeepsItsBytes) {
    put("big", "");
    std::filesystem::resize_file(home() / "big", 50'000'000);
    serve(25'000'000);
    set({"dl-jav-file=big"});
    std::filesystem::create_directories(stored("midlets"));
    std::ofstream(stored("default")) << "default";
    std::filesystem::create_symlink("../default", stored("midlets/big"));
    ChildProcess fetching(command({"download", "midlets"}));
    bool isOpen = false;
    while (std::filesystem::is_symlink(stored("midlets/big"))) {
        EXPECT_EQ(listed("midlets"), std::vector<std::string>{"big"});
        if (!isOpen && phone.ctl({"download-status", "midlets"}).out == "midlets: 50 %\n") {
            openGate();
            isOpen = true;
        }
    }
    EXPECT_EQ(fetching.finish().exitCode, 0);
    EXPECT_EQ(std::filesystem::file_size(stored("midlets/big")), 50'000'000U);
    EXPECT_EQ(contents(stored("default")), "default");
}

TEST_F(DownloadEndings, AClientThatStandsStillHoldsUpNobody) {
    put("half.png", std::string(300'000, 'h'));
    serve(150'000);
    set({"dl-pic-file=half.png"});
    ChildProcess client(command({"download", "images"}));
    waitForHalf("images");
    client.kill(SIGSTOP);
    openGate();
    EXPECT_TRUE(eventually([&] { return valueOf("dl-pic-last-status") == "1"; }));
    client.kill(SIGCONT);
    EXPECT_EQ(client.finish().exitCode, 0);
}

TEST_F(DownloadEndings, AClientThatHasLeftIsNotAskedForItsConsent) {
    put("half.png", std::string(300'000, 'h'));
    serve(150'000);
    set({"dl-pic-file=half.png"});
    ChildProcess client(command({"download", "images"}));
    waitForHalf("images");
    client.kill(SIGKILL);
    client.finish();
    phone.ctl({"busy"});  // the service has seen it go
    phone.process->kill(SIGTERM);
    EXPECT_EQ(phone.process->finish().exitCode, 0);
    EXPECT_TRUE(listed("images").empty());
}

TEST_F(DownloadEndings, ConsentIsTheWordTrueAloneAndASecondSignalNeedsNone) {
    put("half.png", std::string(300'000, 'h'));
    Method start("startDownloadWithFileTypeAndCallback", Method::eRequest);
    start.addIntParameter("filetype", Parameter::eIn, LocalMgmtIfc::FILETYPE_PICTURE);
    std::string request;
    RpcAdapter::encodeText(start, request);
    for (const std::string answer : {"true", "TRUE", "1", ""}) {
        SCOPED_TRACE(answer);
        restart({"--answer-timeout-ms", "300"});
        serve(150'000);
        set({"dl-pic-file=half.png"});
        FramePeer peer(phone.socket());
        peer.hello("consenting");
        // Progress may come in between.
        const auto next = [&peer](FrameKind kind) {
            std::optional<ReceivedFrame> frame = peer.read();
            while (frame && frame->kind != kind) {
                frame = peer.read();
            }
            return frame;
        };
        peer.write(FramePeer::frame(FrameKind::eRequest, 1, request, "vireo_rpc", "LocalMgmtIfc"));
        const std::optional<ReceivedFrame> reply = next(FrameKind::eReply);
        ASSERT_TRUE(reply && reply->payload.ends_with("result2;1;1;"));
        phone.process->kill(SIGTERM);
        const std::optional<ReceivedFrame> asked = next(FrameKind::eRequest);
        ASSERT_TRUE(asked);
        EXPECT_EQ(asked->payload, "15;requestShutdown");
        EXPECT_EQ(asked->interfaceName, "LocalMgmtCallbackIfc");
        if (!answer.empty()) {
            std::string payload;
            Serializer::serialize(payload, "requestShutdown");
            Serializer::serialize(payload, answer);
            peer.write(FramePeer::frame(FrameKind::eReply, asked->correlation, payload,
                                        asked->protocol, asked->interfaceName));
        }
        if (answer != "true") {
            EXPECT_TRUE(eventually([&] {
                return contents(phone.logFile()).find("does not want the phone to stop") !=
                       std::string::npos;
            }));
            EXPECT_EQ(phone.ctl({"busy"}).exitCode, 0);
            phone.process->kill(SIGTERM);
        }
        EXPECT_EQ(phone.process->finish().exitCode, 0);
        std::filesystem::remove(phone.logFile());
        phone.start();
    }
}

TEST_F(DownloadEndings, TheWaitingFormAndTheOtherTakeTurns) {
    serve();
    LocalMgmtClient::DownloadSource source{LocalMgmtIfc::DOWNLOAD_FTP,
                                           "127.0.0.1",
                                           valueOf("dl-ftp-port"),
                                           "a@b",
                                           "p/w:#",
                                           "",
                                           "small.png"};
    set({"dl-pic-file=small.png"});
    const auto waiting = phone.connect();
    const char* const wanted = std::getenv("VIREO_DOWNLOAD_ROUNDS");
    for (int round = wanted != nullptr ? std::atoi(wanted) : 20; round > 0; --round) {
        source.fileName = round % 2 == 0 ? "small.png" : "none.png";
        bool isFetched = false;
        ASSERT_EQ(waiting->fetchFrom(source, LocalMgmtIfc::FILETYPE_PICTURE, isFetched),
                  CallStatus::eDone);
        EXPECT_EQ(isFetched, round % 2 == 0);
        bool isStarted = false;
        ASSERT_EQ(waiting->startDownload(LocalMgmtIfc::FILETYPE_PICTURE, isStarted),
                  CallStatus::eDone);
        EXPECT_TRUE(isStarted);
        ASSERT_TRUE(eventually([&] {
            int percent = 0;
            waiting->requestCurrentDownloadStatus(LocalMgmtIfc::FILETYPE_PICTURE, "", percent);
            return percent == 100 && phone.ctl({"busy"}).out == "busy = 0 (idle)\n";
        }));
    }
}

TEST_F(DownloadEndings, OverHttpsTheCertificatesOfThePhoneDecide) {
    if (!HttpsServer::isInstalled()) {
        GTEST_SKIP() << "nginx-light or openssl is missing";
    }
    std::filesystem::create_directories(home() / "a b");
    std::ofstream(home() / "a b/%41.png") << "picture";
    const HttpsServer server(home());
    set({"dl-ftp-method=HTTPS", "dl-pic-file=%41.png",
         "dl-ftp-base-url=https://127.0.0.1:" + server.port(HttpsServer::eWantsClient) +
             "/a%20b/"});
    EXPECT_EQ(phone.ctl({"download", "images"}).out, "images: not started\n");
    const std::string certificates = phone.root() + "/certificates/";
    std::filesystem::create_directories(certificates + "authorities");
    std::ofstream(certificates + "authorities/a.pem") << server.certificate("authority.pem");
    const Outcome withoutOwn = phone.ctl({"download", "images"});
    EXPECT_TRUE(withoutOwn.out.ends_with("images: failed\n")) << withoutOwn.out;
    EXPECT_NE(contents(phone.logFile()).find("the server answered 400"), std::string::npos);
    std::ofstream(certificates + "client.pem") << server.certificate("client.pem");
    std::ofstream(certificates + "client-key.pem") << server.certificate("client.key");
    std::filesystem::permissions(certificates + "client-key.pem",
                                 std::filesystem::perms::owner_read);
    const Outcome fetched = phone.ctl({"download", "images"});
    EXPECT_EQ(fetched.exitCode, 0) << contents(phone.logFile());
    EXPECT_EQ(contents(stored("images/%41.png")), "picture");
}

}  // namespace
}  // namespace vireo::test
