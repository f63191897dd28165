#pragma once

#include <atomic>
#include <chrono>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>

#include "CallStatus.h"
#include "CallTurn.h"
#include "messages/FileDescriptor.h"

namespace vireo {

class LocalMgmtCallbackIfc;
class MgmtAgentIfc;
class PeerConnection;

/// A connection that many threads use: calls wait for their turn, and what the service sends in
/// between is served for an agent and a callback. Safe from every thread. Private to the library.
class ClientSession {
public:
    struct Settings {
        std::string socketPath;
        std::string channelName;
        std::chrono::milliseconds timeout{};
        // Not owned, outlive the session; null: what is for them is not served.
        MgmtAgentIfc* agent = nullptr;
        LocalMgmtCallbackIfc* callback = nullptr;
    };

    /// Null on failure; `error` then names the path and the cause.
    static std::unique_ptr<ClientSession> open(const Settings& settings, std::string& error);
    ~ClientSession();
    ClientSession(const ClientSession&) = delete;
    ClientSession& operator=(const ClientSession&) = delete;

    bool hasAgent() const { return m_hasAgent; }
    bool hasCallback() const { return m_hasCallback; }
    const std::string& channelName() const;
    std::string closeReason() const;
    void setTimeout(std::chrono::milliseconds timeout);
    int readyDescriptor() const;

    /// Waits for its turn, then for the reply. `reply` is changed by eDone only.
    CallStatus call(std::string_view protocol, std::string_view interfaceName,
                    std::string_view payload, std::string& reply);

    // As `LocalMgmtClient` has them.
    CallStatus serve(std::chrono::milliseconds timeout);
    CallStatus serveUntilStopped();
    bool startServing();
    void stopServing() noexcept;

private:
    ClientSession(std::unique_ptr<PeerConnection> connection, const Settings& settings,
                  FileDescriptor stop);

    CallStatus serveReady(bool& served);

    const std::unique_ptr<PeerConnection> m_connection;
    const bool m_hasAgent;
    const bool m_hasCallback;
    std::atomic<std::chrono::milliseconds> m_timeout;
    const FileDescriptor m_stop;  // readable for good once serving has been stopped
    mutable CallTurn m_turn;      // guards the connection
    std::mutex m_startMutex;      // guards m_thread
    std::thread m_thread;
};

}  // namespace vireo
