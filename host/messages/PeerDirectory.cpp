#include "messages/PeerDirectory.h"

#include <algorithm>
#include <charconv>
#include <mutex>
#include <optional>

namespace vireo {
namespace {

constexpr std::string_view kAnyNumber = "-*";
constexpr std::size_t kMostDigits = 9;

bool isNameCharacter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '.' ||
           c == '_' || c == '-';
}

bool checkName(std::string_view text, std::string& error) {
    if (text.empty() || text.size() > PeerDirectory::kLongestName) {
        error = "a channel name has 1 to 64 bytes, not " + std::to_string(text.size());
        return false;
    }
    if (!std::all_of(text.begin(), text.end(), isNameCharacter)) {
        error = "a channel name has letters, digits, '.', '_' and '-' alone";
        return false;
    }
    return true;
}

struct NumberedName {
    std::string_view prefix;
    std::uint32_t number = 0;
};

/// Splits "vireoctl-2". A name with another form of number, such as "x-02", has none.
std::optional<NumberedName> splitNumber(std::string_view name) {
    const std::size_t dash = name.rfind('-');
    if (dash == std::string_view::npos || dash == 0) {
        return std::nullopt;
    }
    const std::string_view digits = name.substr(dash + 1);
    NumberedName result{name.substr(0, dash), 0};
    if (digits.empty() || digits.size() > kMostDigits || digits.front() == '0') {
        return std::nullopt;
    }
    const auto [end, failure] =
        std::from_chars(digits.data(), digits.data() + digits.size(), result.number);
    if (failure != std::errc{} || end != digits.data() + digits.size()) {
        return std::nullopt;
    }
    return result;
}

}  // namespace

bool PeerDirectory::isName(std::string_view text) {
    std::string ignored;
    return checkName(text, ignored);
}

void PeerDirectory::Numbers::take(std::uint32_t number) {
    if (number < next) {
        freed.erase(number);
    } else {
        takenAhead.insert(number);
        while (takenAhead.erase(next) > 0) {
            ++next;
        }
    }
}

void PeerDirectory::Numbers::give(std::uint32_t number) {
    if (number >= next) {
        takenAhead.erase(number);
        return;
    }
    freed.insert(number);
    while (freed.erase(next - 1) > 0) {
        --next;
    }
}

std::string PeerDirectory::lowestNumbered(std::string_view prefix) const {
    const auto numbers = m_numbers.find(prefix);
    const std::uint32_t number = numbers == m_numbers.end() ? 1 : numbers->second.lowestFree();
    return std::string(prefix) + '-' + std::to_string(number);
}

std::string PeerDirectory::claim(std::string_view wanted, const std::shared_ptr<Connection>& peer,
                                 std::string& error,
                                 const std::function<void(const std::string&)>& announce) {
    const bool anyNumber = wanted.size() > kAnyNumber.size() && wanted.size() <= kLongestName &&
                           wanted.ends_with(kAnyNumber);
    std::string name = anyNumber
                           ? lowestNumbered(wanted.substr(0, wanted.size() - kAnyNumber.size()))
                           : std::string(wanted);
    if (!checkName(name, error)) {
        return {};
    }
    const std::unique_lock lock(m_mutex);
    if (!m_peers.try_emplace(name, peer).second) {
        error = "channel name \"" + name + "\" is in use";
        return {};
    }
    if (const auto numbered = splitNumber(name)) {
        m_numbers[std::string(numbered->prefix)].take(numbered->number);
    }
    if (announce) {
        announce(name);
    }
    return name;
}

bool PeerDirectory::release(const std::string& name, const Connection& owner) {
    const std::unique_lock lock(m_mutex);
    const auto peer = m_peers.find(name);
    if (peer == m_peers.end() || peer->second.get() != &owner) {
        return false;
    }
    m_peers.erase(peer);
    const auto numbered = splitNumber(name);
    const auto numbers = numbered ? m_numbers.find(numbered->prefix) : m_numbers.end();
    if (numbers != m_numbers.end()) {
        numbers->second.give(numbered->number);
        if (numbers->second.unused()) {
            m_numbers.erase(numbers);
        }
    }
    return true;
}

std::shared_ptr<Connection> PeerDirectory::find(std::string_view name) const {
    const std::shared_lock lock(m_mutex);
    const auto peer = m_peers.find(name);
    return peer == m_peers.end() ? nullptr : peer->second;
}

std::size_t PeerDirectory::size() const {
    const std::shared_lock lock(m_mutex);
    return m_peers.size();
}

}  // namespace vireo
