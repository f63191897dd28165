#pragma once

#include <string>
#include <string_view>

#include "harness/Phone.h"
#include "harness/Process.h"
#include "harness/ScratchDirectory.h"
#include "messages/FileDescriptor.h"

namespace vireo::bench {

/// A redis-server of its own on a Unix socket, without persistence, and a client that sends ready
/// requests and looks at nothing but the length of the answers.
class RedisServer {
public:
    explicit RedisServer(const Places& places);

    void get();
    void set();

private:
    void exchange(std::string_view request, std::size_t replySize);

    ScratchDirectory m_directory;
    Process m_process;
    FileDescriptor m_socket;
    std::string m_get;
    std::string m_set[2];
    std::size_t m_getReplySize = 0;
    bool m_isOdd = false;
};

}  // namespace vireo::bench
