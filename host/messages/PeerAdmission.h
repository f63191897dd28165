#pragma once

#include <functional>
#include <memory>
#include <string>

#include "messages/FileDescriptor.h"
#include "messages/ListeningSocket.h"

namespace vireo {

/// The door of the message loop: takes peers from the socket, and leaves them waiting there while
/// the process cannot take any. For one thread at a time.
class PeerAdmission {
public:
    /// What is done with a peer that was taken.
    using Admit = std::function<void(FileDescriptor socket)>;

    /// Waits on `epoll`, which outlives this.
    PeerAdmission(const FileDescriptor& epoll, Admit admit);

    /// False with a one-line `error` when the socket cannot be had.
    bool open(const std::string& socketPath, int backlog, std::string& error);
    bool isOpen() const { return m_listener != nullptr; }
    /// What becomes readable when a peer waits; once it is open.
    int descriptor() const { return m_listener->descriptor(); }

    /// Takes some of the peers that wait.
    void acceptSome();
    /// Whether it has left them waiting, since the last of them could not be taken.
    bool isPaused() const { return !m_isAccepting; }
    void resume() { setAccepting(true); }

private:
    void pause(int reason);
    void setAccepting(bool on);

    const FileDescriptor& m_epoll;
    const Admit m_admit;
    std::unique_ptr<ListeningSocket> m_listener;
    bool m_isAccepting = false;
    bool m_hasFailed = false;
};

}  // namespace vireo
