#pragma once

#include "messages/FileDescriptor.h"

namespace vireo {

/// One descriptor to poll for "there is something to do": the socket can be read, or written where
/// that is wanted, or there is something to do without it. Private to the library.
class ReadyDescriptor {
public:
    /// Empty descriptors, and false from `isUsable`, when the system gives none.
    explicit ReadyDescriptor(int socket);

    bool isUsable() const { return m_epoll && m_wake; }
    /// Readable while there is something to do. Valid as long as the object.
    int get() const { return m_epoll.get(); }

    /// Says what is to be done from now on: `wantsToSend` makes it readable when the socket can be
    /// written, `hasWork` at once. A socket that is closed is forgotten by itself.
    void update(int socket, bool wantsToSend, bool hasWork);

private:
    void wake(bool isAwake);

    FileDescriptor m_epoll;
    FileDescriptor m_wake;
    bool m_isSending = false;
    bool m_isAwake = false;
};

}  // namespace vireo
