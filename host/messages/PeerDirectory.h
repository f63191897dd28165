#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <set>
#include <shared_mutex>
#include <string>
#include <string_view>
#include <unordered_map>

#include "TextHash.h"

namespace vireo {

class Connection;

/// The channel names of the live peers. A name is 1 to 64 letters, digits, '.', '_' and '-'. Names
/// are given and freed on the message thread and looked up on every thread. Every operation looks
/// names up by hash; numbers cost O(log n).
class PeerDirectory {
public:
    static constexpr std::size_t kLongestName = 64;

    /// Whether `text` can be the name of a peer.
    static bool isName(std::string_view text);

    /// Gives `peer` the name `wanted`, or, when that ends in "-*", the same name with the lowest
    /// free number from 1 instead of the asterisk. Answers the name given; empty with a one-line
    /// `error` when it is taken or no name. `announce` is called with the name before any thread
    /// can find the peer by it; it must not come back here.
    std::string claim(std::string_view wanted, const std::shared_ptr<Connection>& peer,
                      std::string& error,
                      const std::function<void(const std::string& name)>& announce = {});
    /// Keeps `name` for what is no peer, to the end. False with a one-line `error` as above.
    bool reserve(std::string_view name, std::string& error) {
        return !claim(name, nullptr, error).empty();
    }
    /// Frees the name of `owner`. A name that is not (or no longer) its own is left alone: false.
    bool release(const std::string& name, const Connection& owner);

    /// The peer of that name, or null.
    std::shared_ptr<Connection> find(std::string_view name) const;
    std::size_t size() const;

private:
    /// Which numbers of one prefix are free: those below `next` in `freed`, and from `next` on all
    /// but those in `takenAhead`, which peers asked for by their full name.
    struct Numbers {
        std::uint32_t next = 1;
        std::set<std::uint32_t> freed;
        std::set<std::uint32_t> takenAhead;

        std::uint32_t lowestFree() const { return freed.empty() ? next : *freed.begin(); }
        void take(std::uint32_t number);
        void give(std::uint32_t number);
        bool unused() const { return next == 1 && takenAhead.empty(); }
    };

    std::string lowestNumbered(std::string_view prefix) const;

    mutable std::shared_mutex m_mutex;  // guards m_peers
    std::unordered_map<std::string, std::shared_ptr<Connection>, TextHash, std::equal_to<>> m_peers;
    std::unordered_map<std::string, Numbers, TextHash, std::equal_to<>> m_numbers;
};

}  // namespace vireo
