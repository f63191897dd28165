#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <string>

#include "LoopFixture.h"
#include "log/Log.h"

namespace vireo::test {
namespace {

class PeerAdmissionTest : public LoopFixture {};

TEST_F(PeerAdmissionTest, WhoeverBreaksARuleIsToldWhichAndDisconnected) {
    start();
    const std::string hello = FramePeer::frame(FrameKind::eHello, 1, "tester", "", "");
    const std::string request = FramePeer::frame(FrameKind::eRequest, 2, "x");
    std::string wrongVersion = request;
    wrongVersion[2] = 2;
    std::string unknownKind = request;
    unknownKind[3] = 7;
    const std::string longHello =
        FramePeer::frame(FrameKind::eHello, 1, std::string(FrameCodec::kMaximumPayload + 1, 'a'));
    const struct {
        std::string bytes;
        const char* reason;
    } rows[] = {
        {"GET / HTTP/1.1\r\n\r\n", "no frame"},
        {"X", "no frame"},
        {wrongVersion, "version 1"},
        {unknownKind, "unknown kind"},
        {request, "first frame must be a hello"},
        {FramePeer::frame(FrameKind::eNotification, 2, "x"), "first frame must be a hello"},
        {FramePeer::frame(FrameKind::eReply, 2, "x"), "first frame must be a hello"},
        {FramePeer::frame(FrameKind::eWelcome, 2, "x"), "first frame must be a hello"},
        {hello + hello, "second hello"},
        {hello + longHello.substr(0, 100), "second hello"},
        {hello + wrongVersion, "version 1"},
        {hello + FramePeer::frame(FrameKind::eWelcome, 2, "x"), "from the service alone"},
        {hello + FramePeer::frame(FrameKind::eRefusal, 2, "x"), "from the service alone"},
        {longHello.substr(0, 100), "hello is too long"},
        {FramePeer::frame(FrameKind::eHello, 1, "", "", ""), "1 to 64 bytes"},
        {FramePeer::frame(FrameKind::eHello, 1, "two\nlines", "", ""), "letters, digits"},
    };
    int refused = 0;
    for (const auto& row : rows) {
        SCOPED_TRACE(row.reason);
        FramePeer peer(m_socket);
        // A request behind the fault must not be served any more.
        peer.write(row.bytes + request);
        auto answer = peer.read();
        if (answer && answer->kind == FrameKind::eWelcome) {
            answer = peer.read();
        }
        ASSERT_TRUE(answer);
        EXPECT_EQ(answer->kind, FrameKind::eRefusal);
        EXPECT_NE(answer->payload.find(row.reason), std::string::npos) << answer->payload;
        EXPECT_EQ(answer->payload.find('\n'), std::string::npos);
        EXPECT_FALSE(peer.read());
        EXPECT_EQ(m_log.count(kLogWarning, "refused "), ++refused);
    }
    EXPECT_EQ(m_invoker.handled, 0);
}

TEST_F(PeerAdmissionTest, OnePeerTooManyIsRefusedAndServedOnceThereIsRoom) {
    start(2);
    FramePeer first(m_socket);
    FramePeer second(m_socket);
    ASSERT_EQ(first.hello("first"), "first");
    ASSERT_EQ(second.hello("second"), "second");
    FramePeer third(m_socket);
    const auto answer = third.read();
    ASSERT_TRUE(answer);
    EXPECT_EQ(answer->kind, FrameKind::eRefusal);
    EXPECT_NE(answer->payload.find("2 peers"), std::string::npos) << answer->payload;
    EXPECT_FALSE(third.read());
    EXPECT_EQ(m_log.count(kLogWarning, "2 peers"), 1);
    EXPECT_EQ(second.ask("served"), "served");
    first.leave();
    EXPECT_EQ(FramePeer(m_socket).hello("fourth"), "fourth");
}

/// As long as it lives, this process gets no new descriptor.
class DescriptorFamine {
public:
    DescriptorFamine() {
        ::getrlimit(RLIMIT_NOFILE, &m_before);
        const FileDescriptor lowestFree(::dup(0));
        rlimit none = m_before;
        none.rlim_cur = static_cast<rlim_t>(lowestFree.get());
        ::setrlimit(RLIMIT_NOFILE, &none);
    }
    DescriptorFamine(const DescriptorFamine&) = delete;
    DescriptorFamine& operator=(const DescriptorFamine&) = delete;
    ~DescriptorFamine() { ::setrlimit(RLIMIT_NOFILE, &m_before); }

private:
    rlimit m_before{};
};

TEST_F(PeerAdmissionTest, WithoutDescriptorsPeersWaitUntilThereAreSome) {
#ifdef __SANITIZE_ADDRESS__
    GTEST_SKIP() << "the undefined behaviour sanitizer built with it needs descriptors of its own";
#endif
    constexpr const char* kNoPeers = "cannot accept peers for now";
    start();
    FramePeer early(m_socket);
    ASSERT_EQ(early.hello("early"), "early");
    FramePeer late;
    {
        const DescriptorFamine famine;
        ASSERT_TRUE(late.connect(m_socket));
        late.write(FramePeer::frame(FrameKind::eHello, 1, "late", "", ""));
        // The loop may have been about to look at this peer again before the other one came.
        for (int i = 0; i == 0 || (i < 1000 && m_log.count(kLogError, kNoPeers) == 0); ++i) {
            ASSERT_EQ(early.ask("served meanwhile"), "served meanwhile");
        }
    }
    const auto welcome = late.read();
    ASSERT_TRUE(welcome);
    EXPECT_EQ(welcome->payload, "late");
    EXPECT_EQ(m_log.count(kLogError, kNoPeers), 1);
}

}  // namespace
}  // namespace vireo::test
