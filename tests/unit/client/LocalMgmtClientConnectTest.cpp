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

LocalMgmtClient::Options optionsAt(const std::string& path, milliseconds timeout = kPatience) {
    LocalMgmtClient::Options options;
    options.socketPath = path;
    options.timeout = timeout;
    return options;
}

TEST(LocalMgmtClientConnect, NamesThePathAndWhyNobodyAnswersThere) {
    const test::TemporaryDirectory directory;
    const std::string plainFile = directory.file("file");
    std::ofstream(plainFile) << "x";
    const std::string abandoned = directory.file("abandoned");
    test::listenAt(abandoned);  // bound, but nobody listens any more
    const std::string closed = directory.file("closed");
    const FileDescriptor listener = test::listenAt(closed);
    ::chmod(closed.c_str(), 0);

    const struct {
        std::string path;
        milliseconds timeout;
        const char* cause;
    } rows[] = {
        {directory.file("none"), kPatience, "no such socket"},
        {plainFile, kPatience, "nobody listens"},
        {abandoned, kPatience, "nobody listens"},
        {closed, kPatience, "permission denied"},
        {"", kPatience, "not a path that a socket can have"},
        {directory.file(std::string(120, 'x')), kPatience, "not a path that a socket can have"},
        {directory.file("none"), milliseconds(0), "a timeout of 0 ms"},
    };
    for (const auto& row : rows) {
        if (row.path == closed && ::geteuid() == 0) {
            continue;  // root may connect to every socket
        }
        std::string error;
        EXPECT_FALSE(LocalMgmtClient::connect(optionsAt(row.path, row.timeout), error));
        EXPECT_NE(error.find("'" + row.path + "'"), std::string::npos) << error;
        EXPECT_NE(error.find(row.cause), std::string::npos) << error;
    }
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
        {"another version", kPatience,
         [](PeerStream& stream) {
             stream.read();
             std::string welcome = frame(FrameKind::eWelcome, 0, "client-1");
             welcome[2] = 9;
             stream.write(welcome);
         }},
        {"something else", kPatience,
         [](PeerStream& stream) {
             stream.read();
             stream.send(FrameKind::eReply, 0, "client-1");
         }},
    };
    for (const auto& row : rows) {
        ScriptedPeer peer(ScriptedPeer::Ungreeted{}, row.script);
        std::string error;
        EXPECT_FALSE(LocalMgmtClient::connect(optionsAt(peer.socketPath(), row.timeout), error));
        EXPECT_NE(error.find(row.cause), std::string::npos) << error;
        EXPECT_NE(error.find(peer.socketPath()), std::string::npos) << error;
    }
}

}  // namespace
}  // namespace vireo
