#include "rivals/RedisServer.h"

#include <sys/socket.h>
#include <sys/un.h>

#include <cstring>

#include "harness/Failure.h"

namespace vireo::bench {
namespace {

constexpr std::size_t kOkSize = 5;  // "+OK\r\n"

std::string command(std::initializer_list<std::string> words) {
    std::string text = "*" + std::to_string(words.size()) + "\r\n";
    for (const std::string& word : words) {
        text += "$" + std::to_string(word.size()) + "\r\n" + word + "\r\n";
    }
    return text;
}

}  // namespace

RedisServer::RedisServer(const Places& places)
    : m_directory(places.sockets),
      m_process(Process::run({"redis-server", "--port", "0", "--unixsocket",
                              m_directory.file("redis"), "--dir", m_directory.path(), "--save", "",
                              "--appendonly", "no", "--hz", "1", "--daemonize", "no"},
                             "ready to accept connections at", places.log)),
      m_socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    const std::string path = m_directory.file("redis");
    require(path.size() < sizeof address.sun_path, "the path of a socket is too long");
    std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
    if (!m_socket || ::connect(m_socket.get(), reinterpret_cast<const sockaddr*>(&address),
                               sizeof address) != 0) {
        failSystem("cannot connect to redis-server");
    }
    // The key is as long as a tag of the phone.
    const std::string key = PhoneConfiguration::memoryTag(0);
    m_get = command({"GET", key});
    m_set[0] = command({"SET", key, valueOf('a')});
    m_set[1] = command({"SET", key, valueOf('b')});
    const std::string length = std::to_string(valueOf('a').size());
    m_getReplySize = 1 + length.size() + 2 + valueOf('a').size() + 2;
    set();
}

void RedisServer::exchange(std::string_view request, std::size_t replySize) {
    if (::send(m_socket.get(), request.data(), request.size(), MSG_NOSIGNAL) !=
        static_cast<ssize_t>(request.size())) {
        failSystem("send");
    }
    char buffer[4096];
    std::size_t received = 0;
    while (received < replySize) {
        const ssize_t got = ::recv(m_socket.get(), buffer, sizeof buffer, 0);
        require(got > 0, "redis-server is gone");
        require(received > 0 || buffer[0] == '+' || buffer[0] == '$', "redis-server refuses");
        received += static_cast<std::size_t>(got);
    }
}

void RedisServer::get() {
    exchange(m_get, m_getReplySize);
}

void RedisServer::set() {
    m_isOdd = !m_isOdd;
    exchange(m_set[m_isOdd ? 1 : 0], kOkSize);
}

}  // namespace vireo::bench
