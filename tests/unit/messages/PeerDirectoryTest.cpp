#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "messages/Connection.h"
#include "messages/PeerDirectory.h"

namespace vireo::test {
namespace {

std::shared_ptr<Connection> newPeer() {
    return std::make_shared<Connection>(FileDescriptor(), FrameCodec::kMaximumPayload);
}

TEST(PeerDirectory, NamesAreCheckedAndRefusalsNameTheFault) {
    PeerDirectory peers;
    const auto peer = newPeer();
    const std::string longest(64, 'n');
    const struct {
        std::string wanted;
        std::string given;
        std::string error;
    } rows[] = {
        {"a", "a", ""},
        {"Aa0.-_z", "Aa0.-_z", ""},
        {longest, longest, ""},
        {longest + "n", "", "1 to 64 bytes, not 65"},
        {"", "", "1 to 64 bytes, not 0"},
        {"a", "", "channel name \"a\" is in use"},
        {"a b", "", "letters, digits"},
        {"\xc3\xa4", "", "letters, digits"},
        {"*", "", "letters, digits"},
        {"x*", "", "letters, digits"},
        {"-*", "", "letters, digits"},
        {"a/b-*", "", "letters, digits"},
        {std::string(62, 'p') + "-*", std::string(62, 'p') + "-1", ""},
        {std::string(63, 'p') + "-*", "", "1 to 64 bytes, not 65"},
        {"tool-*", "tool-1", ""},
        {"tool-*", "tool-2", ""},
        {"tool-1", "", "channel name \"tool-1\" is in use"},
        {"tool-2-*", "tool-2-1", ""},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.wanted);
        std::string error;
        EXPECT_EQ(peers.claim(row.wanted, peer, error), row.given);
        EXPECT_NE(error.find(row.error), std::string::npos) << error;
        EXPECT_EQ(error.empty(), row.error.empty()) << error;
    }
}

TEST(PeerDirectory, OnlyTheOwnerFreesItsName) {
    PeerDirectory peers;
    const auto owner = newPeer();
    const auto stranger = newPeer();
    std::string error;
    peers.claim("name", owner, error);
    peers.release("name", *stranger);
    peers.release("other", *owner);
    EXPECT_EQ(peers.find("name"), owner);
    peers.release("name", *owner);
    EXPECT_EQ(peers.find("name"), nullptr);
    EXPECT_EQ(peers.claim("name", stranger, error), "name");
    peers.release("name", *owner);
    EXPECT_EQ(peers.find("name"), stranger);
}

/// The lowest number from 1 that no name of the map has.
std::string lowestByScan(const std::map<std::string, std::shared_ptr<Connection>>& taken) {
    int number = 1;
    while (taken.contains("p-" + std::to_string(number))) {
        ++number;
    }
    return "p-" + std::to_string(number);
}

TEST(PeerDirectory, NumbersAreTheLowestFreeWhateverComesAndGoes) {
    PeerDirectory peers;
    std::map<std::string, std::shared_ptr<Connection>> taken;
    std::mt19937 random(7);
    std::string error;
    for (int step = 0; step < 20000; ++step) {
        // Grows and shrinks in turn, so that the numbers also become few again.
        const unsigned growth = step / 1000 % 2 == 0 ? 6 : 4;
        if (random() % 10 < growth || taken.empty()) {
            const auto peer = newPeer();
            // One in three asks for a number by its full name, also far ahead.
            const bool full = random() % 3 == 0;
            const std::string wanted = "p-" + (full ? std::to_string(random() % 90 + 1) : "*");
            const bool free = !full || !taken.contains(wanted);
            const std::string expected = full ? wanted : lowestByScan(taken);
            ASSERT_EQ(peers.claim(wanted, peer, error), free ? expected : "") << step;
            if (free) {
                taken[expected] = peer;
            }
        } else {
            const std::size_t position = random() % taken.size();
            const auto leaving = std::next(taken.begin(), static_cast<std::ptrdiff_t>(position));
            peers.release(leaving->first, *leaving->second);
            taken.erase(leaving);
        }
        ASSERT_EQ(peers.size(), taken.size());
    }
}

}  // namespace
}  // namespace vireo::test
