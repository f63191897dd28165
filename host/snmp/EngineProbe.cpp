#include "snmp/EngineProbe.h"

#include <sys/random.h>

#include "snmp/BerCursor.h"

namespace vireo {
namespace {

constexpr std::size_t kShortestId = 5;
constexpr std::size_t kLongestId = 32;

// A message of version 3 with the number that follows the first part, and with flags (an answer is
// wanted) and without a user, an engine and objects behind it.
constexpr std::string_view kUpToNumber("\x30\x3e\x02\x01\x03\x30\x11\x02\x04", 9);
constexpr std::string_view kUpToRequest(
    "\x02\x03\x00\xff\xe3\x04\x01\x04\x02\x01\x03"
    "\x04\x10\x30\x0e\x04\x00\x02\x01\x00\x02\x01\x00\x04\x00\x04\x00\x04\x00"
    "\x30\x14\x04\x00\x04\x00\xa0\x0e\x02\x04",
    39);
constexpr std::string_view kEnd("\x02\x01\x00\x02\x01\x00\x30\x00", 8);

std::string_view contentAt(std::string_view bytes, const BerCursor& cursor) {
    std::size_t begin = 0;
    std::size_t length = 0;
    return cursor.content(begin, length) ? bytes.substr(begin, length) : std::string_view();
}

unsigned numberAt(std::string_view bytes, const BerCursor& cursor) {
    unsigned number = 0;
    for (const char byte : contentAt(bytes, cursor)) {
        number = (number << 8U) | static_cast<unsigned char>(byte);
    }
    return number;
}

}  // namespace

bool EngineProbe::ask(const UdpAddress& address, std::string& error) {
    if (!m_socket.isOpenTo(address)) {
        if (!m_socket.open(address, error)) {
            return false;
        }
        static_cast<void>(::getrandom(m_number.data(), m_number.size(), GRND_NONBLOCK));
        m_number[0] = static_cast<char>((m_number[0] & 0x3f) | 0x40);  // takes four bytes
    }
    std::string question(kUpToNumber);
    question.append(m_number.data(), m_number.size()).append(kUpToRequest);
    question.append(m_number.data(), m_number.size()).append(kEnd);
    return m_socket.send(question, error);
}

std::optional<ReceiverEngine> EngineProbe::read() {
    return parse(m_socket.receive());
}

/// {version, {number, ...}, user's part {engine, boots, time, ...} in a text, ...}
std::optional<ReceiverEngine> EngineProbe::parse(std::string_view answer) const {
    BerCursor cursor(answer);
    if (!cursor.enter() || !cursor.skip(1)) {
        return std::nullopt;
    }
    BerCursor header = cursor;
    if (!header.enter() ||
        contentAt(answer, header) != std::string_view(m_number.data(), m_number.size()) ||
        !cursor.skip(1) || !cursor.enter() || !cursor.enter()) {
        return std::nullopt;
    }
    ReceiverEngine engine;
    engine.id = contentAt(answer, cursor);
    if (engine.id.size() < kShortestId || engine.id.size() > kLongestId || !cursor.skip(1)) {
        return std::nullopt;
    }
    engine.boots = numberAt(answer, cursor);
    if (!cursor.skip(1)) {
        return std::nullopt;
    }
    engine.time = numberAt(answer, cursor);
    return engine;
}

}  // namespace vireo
