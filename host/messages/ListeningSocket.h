#pragma once

#include <memory>
#include <string>

#include "messages/FileDescriptor.h"
#include "messages/LockFile.h"
#include "messages/MessageLimits.h"

namespace vireo {

/// The Unix stream socket that peers connect to. Only the service's own user can: the socket has
/// mode 0600, and directories that are missing are created with mode 0700.
///
/// A lock file `<path>.lock` beside the socket tells a live service from a socket that a killed one
/// left behind; the latter is replaced. The socket is removed when the object ends.
class ListeningSocket {
public:
    /// Null with a one-line `error` that names `path` and the reason: another live service, a file
    /// that is no socket, a path that is too long for an address, no permission.
    /// `backlog` peers may wait to be accepted.
    static std::unique_ptr<ListeningSocket> open(const std::string& path, std::string& error,
                                                 int backlog = MessageLimits().backlog);

    /// Whether somebody listens on a socket of that name.
    static bool isTaken(const std::string& path);

    ListeningSocket(const ListeningSocket&) = delete;
    ListeningSocket& operator=(const ListeningSocket&) = delete;
    ~ListeningSocket();

    int descriptor() const { return m_socket.get(); }
    const std::string& path() const { return m_path; }

private:
    ListeningSocket(std::string path, LockFile lock, FileDescriptor socket)
        : m_path(std::move(path)), m_lock(std::move(lock)), m_socket(std::move(socket)) {}

    std::string m_path;
    LockFile m_lock;
    FileDescriptor m_socket;
};

}  // namespace vireo
