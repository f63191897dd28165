#include <algorithm>
#include <memory>
#include <vector>

#include "StormPeer.h"

namespace vireo::test {
namespace {

constexpr const char* kLongValueTag = "country";

class FrameStorm : public ::testing::Test {
protected:
    void TearDown() override {
        EXPECT_TRUE(honest.isServed());
        expectBoundedMemory(phone);
    }

    /// Writes a value that makes long replies, and answers the request for it.
    std::string askForLongValue() {
        ManageableData record;
        record.populate(kLongValueTag, std::string(400U << 10U, 'v'));
        EXPECT_TRUE(honest.exchange("setData", record.serialize()).first);
        ManageableData wanted;
        wanted.setRootId(kLongValueTag, nullptr);
        return rpcText(
            methodWith("getData", "manageableData", Parameter::eInOut, wanted.serialize()));
    }

    RunningPhone phone;
    StormPeer honest{phone};
};

/// What the service must answer to `bytes` on a welcomed connection, by the rules of frames alone:
/// the ids of the requests up to the first thing that ends the connection.
std::vector<std::uint32_t> requestsIn(std::string_view bytes) {
    std::vector<std::uint32_t> ids;
    FrameHeader header;
    while (FrameCodec::parseHeader(bytes, header) == FrameCodec::Verdict::eHeader) {
        const bool isOversized = header.payloadLength > FrameCodec::kMaximumPayload;
        const std::size_t names = FrameCodec::kHeaderSize + header.nameLength();
        if (header.kind == FrameKind::eHello || header.kind == FrameKind::eWelcome ||
            header.kind == FrameKind::eRefusal ||
            bytes.size() < names + (isOversized ? 0 : header.payloadLength)) {
            break;
        }
        if (header.kind == FrameKind::eRequest) {
            ids.push_back(header.correlation);
        }
        bytes.remove_prefix(std::min(bytes.size(), names + header.payloadLength));
    }
    return ids;
}

TEST_F(FrameStorm, WhateverAHeaderSaysEachRequestInItGetsOneReply) {
    const std::string good = requestFrame(1, honestMessage());
    const std::string next = requestFrame(2, honestMessage()) + requestFrame(3, honestMessage());
    for (std::size_t position = 0; position < FrameCodec::kHeaderSize; ++position) {
        for (const int change : {1, -1, 2, 0x10, 0x40, 0x7f, 0x80}) {
            SCOPED_TRACE("byte " + std::to_string(position) + " changed by " +
                         std::to_string(change));
            std::string bytes = good;
            bytes[position] = static_cast<char>(bytes[position] + change);
            bytes += next;
            StormPeer peer(phone);
            peer.write(bytes);
            peer.endSending();
            std::vector<std::uint32_t> answered;
            while (const auto frame = peer.read()) {
                if (frame->kind == FrameKind::eReply) {
                    answered.push_back(frame->correlation);
                } else {
                    EXPECT_EQ(frame->kind, FrameKind::eRefusal);
                }
            }
            EXPECT_EQ(answered, requestsIn(bytes));
        }
        ASSERT_TRUE(honest.isServed());
    }
}

TEST_F(FrameStorm, PeersThatVanishLeaveNothingBehind) {
    const std::string longRequest = askForLongValue();
    const std::string request = requestFrame(1, honestMessage());
    std::string manyLong;
    for (std::uint32_t i = 0; i < 30; ++i) {
        manyLong += requestFrame(i, longRequest);
    }
    const std::string oversized =
        requestFrame(1, std::string(FrameCodec::kMaximumPayload + 1, 'x'));
    const long before = openDescriptors(phone.process->pid());
    for (int round = 0; round < 10; ++round) {
        for (const std::string& last :
             {std::string(), request.substr(0, 1), request.substr(0, FrameCodec::kHeaderSize),
              request.substr(0, request.size() - 1), request, request + request.substr(0, 20),
              manyLong, oversized.substr(0, 100), oversized.substr(0, oversized.size() - 1)}) {
            StormPeer peer(phone);
            ASSERT_TRUE(peer.write(last));
        }
        ASSERT_TRUE(honest.isServed());
    }
    EXPECT_TRUE(eventually([&] { return openDescriptors(phone.process->pid()) == before; }))
        << "their connections are closed";
}

/// One of many peers: what it does while all others do something, too.
class Guest {
public:
    enum Kind { eHonest, eSlow, eHostile, eDeaf, eVanishing, eKinds };
    static constexpr std::uint32_t kRounds = 20;

    Guest(const RunningPhone& phone, Kind kind, const std::string& longRequest)
        : m_kind(kind), m_longRequest(longRequest), m_peer(std::make_unique<StormPeer>(phone)) {}

    void act(std::uint32_t round) {
        const std::string request = requestFrame(round, honestMessage());
        const std::size_t half = request.size() / 2;
        switch (m_kind) {
            case eHonest:
                EXPECT_TRUE(m_peer->write(request));
                break;
            case eSlow:  // half a request each time
                EXPECT_TRUE(
                    m_peer->write(round % 2 == 0 ? request.substr(0, half) : request.substr(half)));
                break;
            case eHostile:
                m_peer->write(round % 2 == 0 ? std::string(round * 50, '\xff') : "VC\x01");
                break;
            case eDeaf:
                EXPECT_TRUE(m_peer->write(requestFrame(round, m_longRequest)));
                break;
            default:
                if (m_peer) {
                    m_peer->write(request.substr(0, round));
                }
                if (round == 5) {
                    m_peer.reset();
                }
        }
    }

    /// Takes what the service sent, and holds it against what it had to send.
    void finish() {
        if (m_kind == eHostile) {
            const auto refusal = m_peer->read();
            ASSERT_TRUE(refusal);
            EXPECT_EQ(refusal->kind, FrameKind::eRefusal);
            EXPECT_FALSE(m_peer->read());
        } else if (m_kind != eVanishing) {
            const std::uint32_t step = m_kind == eSlow ? 2 : 1;
            for (std::uint32_t round = 0; round < kRounds; round += step) {
                const auto reply = m_peer->read();
                ASSERT_TRUE(reply);
                ASSERT_EQ(reply->correlation, round);
                ASSERT_EQ(reply->payload.size() > honestReply().size(), m_kind == eDeaf);
            }
            EXPECT_TRUE(m_peer->isServed());
        }
    }

private:
    Kind m_kind;
    const std::string& m_longRequest;
    std::unique_ptr<StormPeer> m_peer;
};

TEST_F(FrameStorm, TwoHundredPeersAtOnceGetWhatEachDeserves) {
    const std::string longRequest = askForLongValue();
    std::vector<Guest> guests;
    for (int i = 0; i < 200; ++i) {
        // Few are deaf: each of them makes the service keep several MiB.
        const bool isDeaf = i % 20 == Guest::eDeaf;
        const auto kind = static_cast<Guest::Kind>(i % Guest::eKinds);
        guests.emplace_back(phone, kind == Guest::eDeaf && !isDeaf ? Guest::eHonest : kind,
                            longRequest);
    }
    for (std::uint32_t round = 0; round < Guest::kRounds; ++round) {
        for (Guest& guest : guests) {
            guest.act(round);
        }
        ASSERT_TRUE(honest.isServed());
    }
    for (Guest& guest : guests) {
        guest.finish();
    }
}

}  // namespace
}  // namespace vireo::test
