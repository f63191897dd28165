#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdint>
#include <filesystem>
#include <optional>

#include "messages/RpcAdapter.h"
#include "service/Method.h"
#include "service/Serializer.h"
#include "support/AgentPeer.h"
#include "support/Effort.h"
#include "support/FramePeer.h"
#include "support/FtpServer.h"
#include "support/HttpsServer.h"
#include "support/ProcessState.h"
#include "support/RunningPhone.h"

namespace vireo::test {
namespace {

// A WAVE file of silence: 8000 samples of 8 bits in a second.
std::string silence(std::uint32_t samples) {
    const auto number = [](std::uint32_t value, int bytes) {
        std::string text;
        for (int i = 0; i < bytes; ++i) {
            text += static_cast<char>(value >> (8 * i));
        }
        return text;
    };
    return "RIFF" + number(36 + samples, 4) + "WAVEfmt " + number(16, 4) + number(1, 2) +
           number(1, 2) + number(8000, 4) + number(8000, 4) + number(1, 2) + number(8, 2) + "data" +
           number(samples, 4) + std::string(samples, '\x80');
}

/// A phone and an FTP server that it is set up for.
class DownloadSystem : public testing::Test {
protected:
    void SetUp() override {
        if (!FtpServer::isInstalled()) {
            GTEST_SKIP() << "there is no pyftpdlib on this machine";
        }
        std::filesystem::create_directories(home());
        m_gate = m_directory.file("gate");
        ASSERT_EQ(::mkfifo(m_gate.c_str(), 0600), 0);
        put("bell.wav", silence(20000));
        put("small.png", std::string(2000, 'p'));
        put("large.png", std::string(300001, 'p'));
        put("cut.wav", silence(20000).substr(0, 9000));
        put("foreign", std::string(100000, 'i'));
        put("half.png", std::string(300000, 'h'));
    }

    /// With `hold`, each file stops after so many bytes until `openGate`.
    void serve(long hold = 0) {
        m_server.emplace(m_directory.path().string(), "", hold, hold > 0 ? m_gate : "");
        phone.set({"dl-ftp-addr=127.0.0.1", "dl-ftp-port=" + m_server->port(),
                   "dl-ftp-path=", "dl-ftp-username=a@b", "dl-ftp-password=p/w:#"});
    }
    /// A picture that stops in its middle.
    void offerHalf() {
        serve(150000);
        phone.set({"dl-pic-file=half.png"});
    }
    void endServer() { m_server.reset(); }
    void openGate() { ::close(::open(m_gate.c_str(), O_WRONLY | O_CLOEXEC)); }
    std::string valueOf(const std::string& tag) {
        const std::string line = phone.ctl({"get", tag}).out;
        return line.substr(0, line.size() - 1).substr(tag.size() + 3);
    }
    std::filesystem::path home() const { return m_directory.path() / "home"; }
    void put(const std::string& name, const std::string& bytes) const {
        writeFile(home() / name, bytes);
    }
    std::string stored(const std::string& path) const {
        return phone.root() + "/data/vireo/" + path;
    }
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
    /// Waits until half of a file has come, where the server holds it.
    void waitForHalf(const std::string& type) const {
        while (phone.ctl({"download-status", type}).out != type + ": 50 %\n") {
        }
    }

    RunningPhone phone;

private:
    TemporaryDirectory m_directory;
    std::string m_gate;
    std::optional<FtpServer> m_server;
};

TEST_F(DownloadSystem, FetchesARingerByTheSettingsAndSaysHowItEnded) {
    serve();
    phone.set({"dl-rng-file=bell.wav"});
    const Outcome fetched = phone.ctl({"download", "ringer"});
    EXPECT_EQ(fetched.exitCode, 0) << fetched.err;
    EXPECT_TRUE(fetched.out.ends_with("ringer: " + stored("ringtones/bell.wav") + "\n"))
        << fetched.out;
    EXPECT_EQ(readFile(stored("ringtones/bell.wav")), silence(20000));
    EXPECT_EQ(valueOf("dl-rng-last-status"), "1");
    EXPECT_EQ(valueOf("dl-rng-last-time").size(), std::string("2027-03-01T12:00:00Z").size());
    EXPECT_EQ(phone.ctl({"download-status", "ringer", "bell.wav"}).out, "ringer: 100 %\n");
    EXPECT_EQ(phone.ctl({"download-status", "ringer", "other.wav"}).exitCode, 1);
    EXPECT_EQ(phone.ctl({"validate", "ringer", "bell.wav"}).exitCode, 0);
    EXPECT_EQ(phone.ctl({"validate", "ringer", "none.wav"}).exitCode, 1);
}

TEST_F(DownloadSystem, AGivenSourceNeedsNoSettingsAndItsPasswordComesFromAPipe) {
    serve();
    const std::string port = valueOf("dl-ftp-port");
    phone.set({"dl-ftp-addr=", "dl-ftp-password="});
    std::string line = "printf '%s\\n' 'p/w:#' | '" + std::string(VIREOCTL) + "' --socket '" +
                       phone.socket() + "' download images --from ftp --server 127.0.0.1 --port " +
                       port + " --user a@b --password-stdin small.png";
    const Outcome fetched = ChildProcess::run({"/bin/sh", "-c", line});
    EXPECT_EQ(fetched.exitCode, 0) << fetched.err;
    EXPECT_EQ(readFile(stored("images/small.png")), std::string(2000, 'p'));
}

TEST_F(DownloadSystem, TheWaitingFormAndTheOtherTakeTurns) {
    serve();
    phone.set({"dl-pic-file=small.png"});
    LocalMgmtClient::DownloadSource source{
        LocalMgmtIfc::DOWNLOAD_FTP, "127.0.0.1", valueOf("dl-ftp-port"), "a@b", "p/w:#", "", ""};
    const auto client = phone.connect();
    for (long round = effort("VIREO_DOWNLOAD_ROUNDS", 20); round > 0; --round) {
        source.fileName = round % 2 == 0 ? "small.png" : "none.png";
        bool isFetched = false;
        ASSERT_EQ(client->fetchFrom(source, LocalMgmtIfc::FILETYPE_PICTURE, isFetched),
                  CallStatus::eDone);
        EXPECT_EQ(isFetched, round % 2 == 0);
        bool isStarted = false;
        ASSERT_EQ(client->startDownload(LocalMgmtIfc::FILETYPE_PICTURE, isStarted),
                  CallStatus::eDone);
        EXPECT_TRUE(isStarted);
        ASSERT_TRUE(eventually([&] {
            int percent = 0;
            client->requestCurrentDownloadStatus(LocalMgmtIfc::FILETYPE_PICTURE, "", percent);
            return percent == 100 && phone.ctl({"busy"}).out == "busy = 0 (idle)\n";
        }));
    }
}

TEST_F(DownloadSystem, OneThatIsLeftGoesOnAndNoOtherIsStartedMeanwhile) {
    offerHalf();
    ChildProcess first(phone.ctlCommand({"download", "images"}));
    std::string line;
    while (first.readLine(line) && line == "0 %") {
    }
    const Outcome second = phone.ctl({"download", "images"});
    EXPECT_EQ(second.exitCode, 1);
    EXPECT_EQ(second.out, "images: not started\n");
    first.kill(SIGINT);
    const Outcome left = first.finish();
    EXPECT_EQ(left.exitCode, 1);
    EXPECT_NE(left.err.find("the download goes on"), std::string::npos) << left.err;
    EXPECT_FALSE(std::filesystem::exists(stored("images/half.png")));

    ChildProcess watch(phone.ctlCommand({"watch", "dl-pic-last-status", "--count", "1"}));
    ASSERT_TRUE(watch.readErrorLine(line));
    EXPECT_NE(line.find("watching"), std::string::npos) << line;
    openGate();
    EXPECT_EQ(watch.finish().out, "dl-pic-last-status = 1\n");
    EXPECT_EQ(std::filesystem::file_size(stored("images/half.png")), 300000U);
}

TEST_F(DownloadSystem, ObserversSeeThePhoneBusyOnceWhateverTheEnding) {
    restart({"--stall-timeout-ms", "500"});
    AgentPeer observer(phone, "observer");
    ASSERT_TRUE(observer.observe("phone-busy-status"));
    ASSERT_TRUE(observer.client().startServing());
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
        phone.set(row.settings);
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

TEST_F(DownloadSystem, NothingIsListedBeforeItIsCompleteAndADefaultKeepsItsBytes) {
    put("big", "");
    std::filesystem::resize_file(home() / "big", 50'000'000);
    serve(25'000'000);
    phone.set({"dl-jav-file=big"});
    std::filesystem::create_directories(stored("midlets"));
    writeFile(stored("default"), "default");
    std::filesystem::create_symlink("../default", stored("midlets/big"));
    ChildProcess fetching(phone.ctlCommand({"download", "midlets"}));
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
    EXPECT_EQ(readFile(stored("default")), "default");
}

TEST_F(DownloadSystem, AClientThatStandsStillHoldsUpNobody) {
    offerHalf();
    ChildProcess client(phone.ctlCommand({"download", "images"}));
    waitForHalf("images");
    client.kill(SIGSTOP);
    openGate();
    EXPECT_TRUE(eventually([&] { return valueOf("dl-pic-last-status") == "1"; }));
    client.kill(SIGCONT);
    EXPECT_EQ(client.finish().exitCode, 0);
}

TEST_F(DownloadSystem, AClientThatHasLeftIsNotAskedForItsConsent) {
    offerHalf();
    ChildProcess client(phone.ctlCommand({"download", "images"}));
    waitForHalf("images");
    client.kill(SIGKILL);
    client.finish();
    phone.ctl({"busy"});  // the service has seen it go
    phone.stop();
    EXPECT_TRUE(listed("images").empty());
}

TEST_F(DownloadSystem, ConsentIsTheWordTrueAloneAndASecondSignalNeedsNone) {
    Method start("startDownloadWithFileTypeAndCallback", Method::eRequest);
    start.addIntParameter("filetype", Parameter::eIn, LocalMgmtIfc::FILETYPE_PICTURE);
    std::string request;
    RpcAdapter::encodeText(start, request);
    for (const std::string answer : {"true", "TRUE", "1", ""}) {
        SCOPED_TRACE(answer);
        restart({"--answer-timeout-ms", "300"});
        offerHalf();
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
                return phone.log().find("does not want the phone to stop") != std::string::npos;
            }));
            EXPECT_EQ(phone.ctl({"busy"}).exitCode, 0);
            phone.process->kill(SIGTERM);
        }
        EXPECT_EQ(phone.process->finish().exitCode, 0);
        std::filesystem::remove(phone.logFile());
        phone.start();
    }
}

TEST_F(DownloadSystem, OverHttpsTheCertificatesOfThePhoneDecide) {
    if (!HttpsServer::isInstalled()) {
        GTEST_SKIP() << "nginx-light or openssl is missing";
    }
    put("a b/%41.png", "picture");
    const HttpsServer server(home());
    phone.set({"dl-ftp-method=HTTPS", "dl-pic-file=%41.png",
               "dl-ftp-base-url=https://127.0.0.1:" + server.port(HttpsServer::eWantsClient) +
                   "/a%20b/"});
    EXPECT_EQ(phone.ctl({"download", "images"}).out, "images: not started\n");
    const std::string certificates = phone.root() + "/certificates/";
    writeFile(certificates + "authorities/a.pem", server.certificate("authority.pem"));
    const Outcome withoutOwn = phone.ctl({"download", "images"});
    EXPECT_TRUE(withoutOwn.out.ends_with("images: failed\n")) << withoutOwn.out;
    EXPECT_NE(phone.log().find("the server answered 400"), std::string::npos);
    writeFile(certificates + "client.pem", server.certificate("client.pem"));
    writeFile(certificates + "client-key.pem", server.certificate("client.key"));
    std::filesystem::permissions(certificates + "client-key.pem",
                                 std::filesystem::perms::owner_read);
    const Outcome fetched = phone.ctl({"download", "images"});
    EXPECT_EQ(fetched.exitCode, 0) << phone.log();
    EXPECT_EQ(readFile(stored("images/%41.png")), "picture");
}

}  // namespace
}  // namespace vireo::test
