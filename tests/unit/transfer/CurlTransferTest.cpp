#include <arpa/inet.h>
#include <gmock/gmock.h>
#include <sys/socket.h>

#include "unit/transfer/TransferFixture.h"

namespace vireo::test {
namespace {

using testing::HasSubstr;

TEST_F(Ftp, FilesComeByteForByte) {
    serve("home/large", randomBytes(kLarge, 1));
    serve("home/empty", "");
    serve("home/a b/%41", "relative");
    serve("a b/%41", "absolute");
    serve("home/other/f", "by default");
    const FtpServer server(served.path().string());
    TemporaryDirectory decoys;
    std::filesystem::create_directories(decoys.path() / "home/a b");
    std::ofstream(decoys.path() / "home/a b/%41") << "another server";
    // On the usual port, where the test may take it; its port is empty otherwise.
    const FtpServer decoy(decoys.path().string(), "21");
    const struct {
        const char* path;
        const char* file;
        const char* servedAs;
    } rows[] = {{"", "large", "home/large"},    {"", "empty", "home/empty"},
                {"a b", "%41", "home/a b/%41"}, {"", "a b/%41", "home/a b/%41"},
                {"/a b/", "%41", "a b/%41"},    {"../home/other", "f", "home/other/f"}};
    for (const bool isActive : {false, true}) {
        endTransfers();
        options.usesActiveFtp = isActive;
        for (const auto& row : rows) {
            expectFetched(ftp(server.port(), row.path, row.file), row.servedAs);
        }
    }
    if (!decoy.port().empty()) {
        EXPECT_EQ(100, fetch(ftp("", "a b", "%41"))) << "without a port it is the usual one";
        EXPECT_EQ("another server", contentOf(local("got")));
    }
}

TEST_F(Https, FilesComeByteForByte) {
    serve("large", randomBytes(kLarge, 1));
    serve("empty", "");
    serve("a b/%41", "strange names");
    serve("locked/f", "for one user");
    const HttpsServer server(served.path().string());
    trust(server);
    const std::string port = server.port(HttpsServer::eGood);
    TransferRequest withUser = https(port, "locked", "f");
    withUser.userName = "a@b";
    withUser.password = "p/w:#";
    TransferRequest withBase = https("1", "", "%41");
    withBase.server = "https://127.0.0.1:" + port + "/a%20b";
    const struct {
        TransferRequest request;
        const char* servedAs;
    } rows[] = {{https(port, "", "large"), "large"},
                {https(port, "", "empty"), "empty"},
                {https(port, "a b", "%41"), "a b/%41"},
                {withBase, "a b/%41"},
                {withUser, "locked/f"},
                {https(port, "moved", "large"), "large"}};
    for (const auto& row : rows) {
        expectFetched(row.request, row.servedAs);
    }
}

TEST_F(Ftp, FailuresSayServerFileAndReason) {
    serve("home/f", "content");
    const FtpServer server(served.path().string());
    TransferRequest wrongPassword = ftp(server.port(), "", "f");
    wrongPassword.password = "wrong";
    TransferRequest unknownHost = ftp("", "", "f");
    unknownHost.server = "no-such-host.invalid";
    TransferRequest nowhere = ftp(server.port(), "", "f");
    nowhere.localPath = local("missing/got");
    TransferRequest outside = ftp(server.port(), "", "f");
    outside.localPath = "/proc/got";
    TransferRequest linked = ftp(server.port(), "", "f");
    linked.localPath = local("link/got");
    std::filesystem::create_directory_symlink("/tmp", local("link"));
    const std::string place = "' from ftp server '127.0.0.1:" + server.port() + "': ";
    const struct {
        TransferRequest request;
        std::string line;
    } rows[] = {{wrongPassword, "cannot fetch 'f" + place + "user name or password refused"},
                {ftp(server.port(), "", "g"), "cannot fetch 'g" + place + "no such file"},
                {ftp(server.port(), "x", "f"), "cannot fetch 'x/f" + place + "no such directory"},
                {ftp("1", "", "f"), "'127.0.0.1:1': no connection: Connection refused"},
                {unknownHost, "ftp server 'no-such-host.invalid:21': unknown host"},
                {nowhere, "cannot use \"" + local("missing/") + "\": No such file or directory"},
                {outside, "cannot use \"/proc/got\": it does not lie below " + local("")},
                {linked, "cannot use \"" + local("link/") + "\": there is something else"}};
    for (const auto& row : rows) {
        EXPECT_GT(0, fetch(row.request)) << row.line;
        EXPECT_EQ(1, ports.count(kLogError, row.line)) << row.line;
    }
    std::filesystem::remove(local("link"));
    EXPECT_TRUE(std::filesystem::is_empty(phone.path()));
}

TEST_F(Https, FailuresSayServerFileAndReason) {
    serve("f", "content");
    serve("locked/f", "content");
    const HttpsServer server(served.path().string());
    const std::string good = server.port(HttpsServer::eGood);
    const struct {
        const char* authority;
        TransferRequest request;
        std::string line;
    } rows[] = {
        {"authority.pem", https(server.port(HttpsServer::eWrongHost), "", "f"), "no alternative"},
        {"authority.pem", https(server.port(HttpsServer::eExpired), "", "f"), "has expired"},
        {"stranger.pem", https(good, "", "f"), "unable to get local issuer"},
        {"authority.pem", https(server.port(HttpsServer::eWantsClient), "", "f"), "answered 400"},
        {"authority.pem", https(good, "", "g"), "the server answered 404"},
        {"authority.pem", https(good, "locked", "f"), "the server answered 401"},
        {"authority.pem", https(good, "away", "f"), "\"http\" not supported"}};
    for (const auto& row : rows) {
        trust(server, row.authority);
        ports.forgetLines();
        EXPECT_GT(0, fetch(row.request)) << row.line;
        EXPECT_THAT(ports.lines(kLogError),
                    testing::ElementsAre(testing::AllOf(HasSubstr(row.line),
                                                        HasSubstr("https server '127.0.0.1:"))));
    }
    EXPECT_TRUE(std::filesystem::is_empty(phone.path()));
}

TEST_F(Https, PolicyAndCertificatesDecide) {
    serve("f", "content");
    const HttpsServer server(served.path().string());
    const auto text = [&](const char* file) { return server.certificate(file); };
    const SecurityCertificate authority{SecurityCertificate::eAuthority, text("authority.pem")};
    const SecurityCertificate stranger{SecurityCertificate::eAuthority, text("stranger.pem")};
    const SecurityCertificate client{SecurityCertificate::eClientCertificate, text("client.pem")};
    const SecurityCertificate key{SecurityCertificate::eClientKey, text("client.key")};
    EXPECT_THAT(refusal(https(server.port(HttpsServer::eGood), "", "f")),
                HasSubstr("there are no certificates yet"));
    transfer().setSecurityDetails({{}, {client, key}});
    EXPECT_THAT(refusal(https(server.port(HttpsServer::eGood), "", "f")),
                HasSubstr("no authority is known"));
    const struct {
        HttpsServer::ePort port;
        SecurityDetails details;
        bool isGood;
    } rows[] = {{HttpsServer::eWantsClient, {{}, {authority, client, key}}, true},
                {HttpsServer::eGood, {{}, {stranger, authority}}, true},
                {HttpsServer::eGood, {{false, true}, {}}, true},
                {HttpsServer::eExpired, {{false, false}, {}}, true},
                {HttpsServer::eWrongHost, {{true, false}, {authority}}, true},
                {HttpsServer::eWrongHost, {{false, true}, {}}, false},
                {HttpsServer::eGood, {{true, false}, {stranger}}, false},
                {HttpsServer::eGood, {{}, {{SecurityCertificate::eAuthority, "none"}}}, false}};
    for (const auto& row : rows) {
        transfer().setSecurityDetails(row.details);
        EXPECT_EQ(row.isGood, fetch(https(server.port(row.port), "", "f")) == 100) << &row - rows;
    }
}

/// Accepts no connection, or accepts one and says nothing.
class SilentServer : public TransferTest {
protected:
    SilentServer() {
        m_address.sin_family = AF_INET;
        m_address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t length = sizeof m_address;
        const FileDescriptor& listening = add();
        ::bind(listening.get(), address(), length);
        ::listen(listening.get(), 0);
        ::getsockname(listening.get(), address(), &length);
        options.connectTimeout = std::chrono::milliseconds(300);
        options.stallTimeout = std::chrono::milliseconds(200);
    }
    void fillQueue() {
        for (int i = 0; i < 4; ++i) {
            ::connect(add().get(), address(), sizeof m_address);
        }
    }
    std::string port() const { return std::to_string(ntohs(m_address.sin_port)); }

private:
    FileDescriptor& add() {
        return m_sockets.emplace_back(
            ::socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
    }
    sockaddr* address() { return reinterpret_cast<sockaddr*>(&m_address); }

    sockaddr_in m_address{};
    std::vector<FileDescriptor> m_sockets;
};

TEST_F(SilentServer, IsGivenUpAfterTheStallTimeout) {
    EXPECT_GT(0, fetch(ftp(port(), "", "f")));
    EXPECT_EQ(1, ports.count(kLogError, "the server sent nothing for 0.2 s"));
}

TEST_F(SilentServer, IsGivenUpAfterTheConnectTimeout) {
    fillQueue();
    EXPECT_GT(0, fetch(ftp(port(), "", "f")));
    EXPECT_EQ(1, ports.count(kLogError, "no connection within 0.3 s"));
}

TEST_F(SilentServer, DoesNotDelayTheEndOfTheService) {
    options = {};
    Reports& reports = start(ftp(port(), "", "f"));
    const auto before = std::chrono::steady_clock::now();
    transfer().stop();
    EXPECT_GT(0, reports.end());
    EXPECT_GT(options.connectTimeout / 2, std::chrono::steady_clock::now() - before);
    EXPECT_EQ(1, ports.count(kLogError, "stopped with the service"));
    EXPECT_THAT(refusal(ftp(port(), "", "f")), HasSubstr("transfers have ended"));
}

TEST_F(TransferTest, RefusesWhatIsNoFileOfThePhone) {
    for (const char* path : {"", "relative", "/dir/", "/dir/..", "/dir/.vireo-part-1-1"}) {
        TransferRequest request = ftp("1", "", "f");
        request.localPath = path;
        EXPECT_THAT(refusal(request), HasSubstr("no transfer of 'f' from ftp server")) << path;
    }
    EXPECT_FALSE(transfer().isActive());
}

TEST_F(TransferTest, WhoeverHearsTheEndMayStartAgain) {
    for (int i = 0; i < 200; ++i) {
        EXPECT_GT(0, fetch(ftp("1", "", "f")));
    }
    Reports second;
    Reports first;
    std::string error;
    first.onEnd = [&] { EXPECT_TRUE(transfer().getFile(ftp("1", "", "f"), second, error)); };
    ASSERT_TRUE(transfer().getFile(ftp("1", "", "f"), first, error)) << error;
    EXPECT_GT(0, first.end());
    EXPECT_GT(0, second.end());
    endTransfers();
}

}  // namespace
}  // namespace vireo::test
