#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <fstream>
#include <string>

#include "LocalMgmtClient.h"
#include "unit/client/ScriptedPeer.h"

namespace vireo {
namespace {

using std::chrono::milliseconds;

LocalMgmtClient::Options optionsFor(const std::string& path, milliseconds timeout = kPatience) {
    LocalMgmtClient::Options options;
    options.socketPath = path;
    options.timeout = timeout;
    return options;
}

TEST(LocalMgmtClientConnect, GreetsWithTheWantedNameAndTakesTheGivenOne) {
    ScriptedPeer peer([](PeerStream& stream) {
        const auto hello = stream.read();
        ASSERT_TRUE(hello);
        EXPECT_EQ(hello->header.kind, FrameKind::eHello);
        EXPECT_EQ(hello->payload, "panel-*");
        stream.send(FrameKind::eWelcome, 0, "panel-7");
    });
    LocalMgmtClient::Options options = optionsFor(peer.socketPath());
    options.channelName = "panel-*";
    std::string error;
    const auto client = LocalMgmtClient::connect(options, error);
    ASSERT_TRUE(client) << error;
    EXPECT_EQ(client->channelName(), "panel-7");
    EXPECT_EQ(client->closeReason(), "");
}

TEST(LocalMgmtClientConnect, NamesThePathAndWhyNobodyAnswersThere) {
    const test::TemporaryDirectory directory;
    const std::string plainFile = directory.file("file");
    std::ofstream(plainFile) << "x";
    const std::string abandoned = directory.file("abandoned");
    listenAt(abandoned);  // bound, but nobody listens any more

    const struct {
        std::string path;
        milliseconds timeout;
        const char* cause;
    } rows[] = {
        {directory.file("none"), kPatience, "no such socket"},
        {plainFile, kPatience, "nobody listens"},
        {abandoned, kPatience, "nobody listens"},
        {"", kPatience, "not a path that a socket can have"},
        {directory.file(std::string(120, 'x')), kPatience, "not a path that a socket can have"},
        {directory.file("none"), milliseconds(0), "a timeout of 0 ms"},
    };
    for (const auto& row : rows) {
        std::string error;
        EXPECT_FALSE(LocalMgmtClient::connect(optionsFor(row.path, row.timeout), error));
        EXPECT_NE(error.find("'" + row.path + "'"), std::string::npos) << error;
        EXPECT_NE(error.find(row.cause), std::string::npos) << error;
    }
}

TEST(LocalMgmtClientConnect, SaysWhenTheSocketIsNotForThisUser) {
    if (::geteuid() == 0) {
        GTEST_SKIP() << "root may connect to every socket";
    }
    const test::TemporaryDirectory directory;
    const std::string path = directory.file("socket");
    const FileDescriptor listener = listenAt(path);
    ::chmod(path.c_str(), 0);
    std::string error;
    EXPECT_FALSE(LocalMgmtClient::connect(optionsFor(path), error));
    EXPECT_NE(error.find("permission denied"), std::string::npos) << error;
}

TEST(LocalMgmtClientConnect, SaysWhatWentWrongWithTheGreeting) {
    const struct {
        const char* cause;
        milliseconds timeout;
        ScriptedPeer::Script script;
    } rows[] = {
        {"channel name 'client-*' is taken", kPatience,
         [](PeerStream& stream) {
             stream.read();
             stream.send(FrameKind::eRefusal, 0, "channel name 'client-*' is taken");
         }},
        // The reason is read even when the service hung up without reading the greeting.
        {"too many peers", kPatience,
         [](PeerStream& stream) {
             stream.send(FrameKind::eRefusal, 0, "too many peers");
             stream.close();
         }},
        {"no welcome within 30 ms", kBrief,
         [](PeerStream& stream) {
             stream.read();
             stream.read();  // until the client gives up
         }},
        {"closed the connection", kPatience,
         [](PeerStream& stream) {
             stream.read();
             stream.close();
         }},
        {"not a vireo service", kPatience,
         [](PeerStream& stream) {
             stream.read();
             stream.sendBytes("HTTP/1.1 400 Bad Request\r\n\r\n");
         }},
        {"another version", kPatience,
         [](PeerStream& stream) {
             stream.read();
             std::string welcome = frame(FrameKind::eWelcome, 0, "client-1");
             welcome[2] = 9;
             stream.sendBytes(welcome);
         }},
        {"something else", kPatience,
         [](PeerStream& stream) {
             stream.read();
             stream.send(FrameKind::eReply, 0, "client-1");
         }},
    };
    for (const auto& row : rows) {
        ScriptedPeer peer(row.script);
        std::string error;
        EXPECT_FALSE(LocalMgmtClient::connect(optionsFor(peer.socketPath(), row.timeout), error));
        EXPECT_NE(error.find(row.cause), std::string::npos) << error;
        EXPECT_NE(error.find(peer.socketPath()), std::string::npos) << error;
    }
}

}  // namespace
}  // namespace vireo
