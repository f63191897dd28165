#include "snmp/TrapReceiverText.h"

#include <charconv>
#include <vector>

namespace vireo {
namespace {

constexpr std::string_view kUser = "user=";

std::vector<std::string_view> wordsOf(std::string_view text) {
    std::vector<std::string_view> words;
    while (true) {
        const std::size_t begin = text.find_first_not_of(" \t");
        if (begin == std::string_view::npos) {
            return words;
        }
        const std::size_t end = std::min(text.find_first_of(" \t", begin), text.size());
        words.push_back(text.substr(begin, end - begin));
        text.remove_prefix(end);
    }
}

/// Takes "host", "host:port", "[address]:port" or an IPv6 address apart.
bool takePlace(std::string_view place, ReceiverSettings& receiver) {
    std::string_view host = place;
    std::string_view port;
    const std::size_t colon = place.rfind(':');
    if (place.starts_with('[')) {
        const std::size_t end = place.find(']');
        if (end == std::string_view::npos) {
            return false;
        }
        host = place.substr(1, end - 1);
        if (end + 1 < place.size()) {
            if (colon != end + 1) {
                return false;
            }
            port = place.substr(colon + 1);
        }
    } else if (colon != std::string_view::npos && place.find(':') == colon) {
        host = place.substr(0, colon);
        port = place.substr(colon + 1);
    }
    const bool hasPort = host.size() + (place.starts_with('[') ? 2 : 0) < place.size();
    receiver.host = host;
    receiver.port = port;
    return !host.empty() && (!hasPort || parsePort(port));
}

bool takeVersion(std::string_view word, ReceiverSettings& receiver) {
    constexpr std::string_view kNames[] = {"v1", "v2c", "v3"};
    for (std::size_t i = 0; i < std::size(kNames); ++i) {
        if (word == kNames[i]) {
            receiver.version = static_cast<SnmpVersion>(i);
            return true;
        }
    }
    return false;
}

bool takeWord(std::string_view word, ReceiverSettings& receiver) {
    if (word == "inform") {
        receiver.isConfirmed = true;
        return true;
    }
    if (word.starts_with(kUser) && word.size() > kUser.size()) {
        receiver.user = word.substr(kUser.size());
        return true;
    }
    return false;
}

std::string findContradiction(const ReceiverSettings& receiver) {
    if (receiver.version == SnmpVersion::eV1 && receiver.isConfirmed) {
        return "version 1 knows no inform";
    }
    if ((receiver.version == SnmpVersion::eV3) != !receiver.user.empty()) {
        return receiver.user.empty() ? "version 3 needs user=NAME" : "only version 3 has users";
    }
    return {};
}

}  // namespace

std::optional<unsigned short> parsePort(std::string_view text) {
    unsigned short port = 0;
    const char* const end = text.data() + text.size();
    const auto [next, failure] = std::from_chars(text.data(), end, port);
    const bool isPort = failure == std::errc() && next == end && port != 0;
    return isPort ? std::optional(port) : std::nullopt;
}

std::optional<ReceiverSettings> TrapReceiverText::parse(std::string_view text, std::string& error) {
    const std::vector<std::string_view> words = wordsOf(text);
    ReceiverSettings receiver;
    bool isWellFormed =
        words.size() >= 2 && takePlace(words[0], receiver) && takeVersion(words[1], receiver);
    for (std::size_t i = 2; isWellFormed && i < words.size(); ++i) {
        isWellFormed = takeWord(words[i], receiver);
    }
    error = isWellFormed ? findContradiction(receiver)
                         : "it should be HOST[:PORT] v1|v2c|v3 [inform] [user=NAME]";
    if (!error.empty()) {
        error = "\"" + std::string(text) + "\" is no receiver of traps: " + error;
        return std::nullopt;
    }
    return receiver;
}

ReceiverSettings findReceiver(const TrapOptions& options, const std::string& host,
                              const std::string& port) {
    for (const ReceiverSettings& receiver : options.receivers) {
        if ((receiver.host == "*" || receiver.host == host) &&
            (receiver.port.empty() || parsePort(receiver.port) == parsePort(port))) {
            return receiver;
        }
    }
    return {};
}

}  // namespace vireo
