#include "messages/ListeningSocket.h"

#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <optional>
#include <system_error>

#include "messages/PrivateDirectory.h"

namespace vireo {
namespace {

bool makeAddress(const std::string& path, sockaddr_un& address, std::string& error) {
    if (path.empty() || path.size() >= sizeof address.sun_path) {
        error = path.empty() ? "the path is empty"
                             : "the path is longer than " +
                                   std::to_string(sizeof address.sun_path - 1) + " bytes";
        return false;
    }
    address = {};
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
    return true;
}

const sockaddr* generic(const sockaddr_un& address) {
    return reinterpret_cast<const sockaddr*>(&address);
}

/// Under our lock it is some other program that answers.
bool somebodyListens(const sockaddr_un& address) {
    const FileDescriptor probe(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    return probe &&
           (::connect(probe.get(), generic(address), sizeof address) == 0 || errno == EAGAIN);
}

bool removeStale(const std::string& path, const sockaddr_un& address, std::string& error) {
    struct stat status {};
    if (::lstat(path.c_str(), &status) != 0) {
        error = std::generic_category().message(errno);
        return errno == ENOENT;
    }
    if (!S_ISSOCK(status.st_mode)) {
        error = "there is something of that name that is no socket";
        return false;
    }
    if (somebodyListens(address)) {
        error = "another program listens there";
        return false;
    }
    if (::unlink(path.c_str()) != 0) {
        error = "cannot remove the left-over socket: " + std::generic_category().message(errno);
        return false;
    }
    return true;
}

FileDescriptor bindPrivately(const sockaddr_un& address, int backlog, std::string& error) {
    FileDescriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    // The socket's mode is set before it has a name: there is no moment at which others can
    // connect, and the process-wide umask is left alone.
    if (!socket || ::fchmod(socket.get(), 0600) != 0 ||
        ::bind(socket.get(), generic(address), sizeof address) != 0 ||
        ::listen(socket.get(), backlog) != 0) {
        error = std::generic_category().message(errno);
        return {};
    }
    return socket;
}

}  // namespace

std::unique_ptr<ListeningSocket> ListeningSocket::open(const std::string& path, std::string& error,
                                                       int backlog) {
    std::string reason;
    sockaddr_un address{};
    std::optional<LockFile> lock;
    FileDescriptor socket;
    if (makeAddress(path, address, reason) &&
        PrivateDirectory::create(std::filesystem::path(path).parent_path(), reason)) {
        lock = LockFile::acquire(path + ".lock", reason);
    }
    if (lock && removeStale(path, address, reason)) {
        socket = bindPrivately(address, backlog, reason);
    }
    if (!lock || !socket) {
        error = "cannot listen on \"" + path + "\": " + reason;
        return nullptr;
    }
    return std::unique_ptr<ListeningSocket>(
        new ListeningSocket(path, std::move(*lock), std::move(socket)));
}

bool ListeningSocket::isTaken(const std::string& path) {
    sockaddr_un address{};
    std::string ignored;
    return makeAddress(path, address, ignored) && somebodyListens(address);
}

// Still under the lock: nobody else can have made a socket of that name.
ListeningSocket::~ListeningSocket() {
    ::unlink(m_path.c_str());
}

}  // namespace vireo
