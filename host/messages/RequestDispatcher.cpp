#include "messages/RequestDispatcher.h"

#include <malloc.h>

#include <exception>
#include <utility>

#include "log/Log.h"
#include "messages/Connection.h"
#include "service/Invoker.h"

namespace vireo {
namespace {

constexpr const char* kComponent = "RequestDispatcher";
constexpr const char* kFile = "./host/messages/RequestDispatcher";

// Messages that are handled while the handling of others waits.
constexpr std::size_t kDeepest = 17;

// After a message of more bytes than this, memory is given back to the machine.
constexpr std::size_t kLargeMessage = 256U << 10U;

}  // namespace

void RequestDispatcher::serve(std::string interfaceName, Invoker& invoker, Executable& executable) {
    m_targets[std::move(interfaceName)] = {&invoker, &executable};
}

void RequestDispatcher::dispatch(Connection& connection, const Frame& frame) {
    const auto target = m_targets.find(frame.interfaceName);
    if (target == m_targets.end()) {
        if (loggingOnUni(kLogWarning)) {
            logAppUni(kComponent, kFile, kLogWarning, __LINE__,
                      "%s asked for the interface \"%.*s\", which nobody offers",
                      connection.label().c_str(), static_cast<int>(frame.interfaceName.size()),
                      frame.interfaceName.data());
        }
        answerEmpty(connection, frame);
        return;
    }
    if (m_depth == kDeepest) {
        if (loggingOnUni(kLogWarning)) {
            logAppUni(kComponent, kFile, kLogWarning, __LINE__,
                      "message of %s is not handled: %zu others wait for each other already",
                      connection.label().c_str(), m_depth);
        }
        answerEmpty(connection, frame);
        return;
    }
    if (m_depth == m_levels.size()) {
        m_levels.push_back(std::make_unique<Level>());
    }
    Level& level = *m_levels[m_depth++];
    level.peer = &connection;
    level.response.begin(connection, frame);
    const std::size_t size = frame.payload.size();
    invoke(target->second, level, target->first, frame.payload);
    if (level.response.isPostponed()) {
        target->second.hasPostponed = true;
        m_postponed.push_back(connection.shared_from_this());
    }
    level.response.sendEmpty();
    if (level.response.isEmpty() && loggingOnUni(kLogWarning)) {
        logAppUni(kComponent, kFile, kLogWarning, __LINE__,
                  "%s sent %zu bytes in \"%s\" that could not be served",
                  connection.label().c_str(), size, level.response.protocol().c_str());
    }
    --m_depth;
    if (m_depth == 0 && size > kLargeMessage) {
        // A message of many small parts leaves a heap of holes behind.
        ::malloc_trim(0);
    }
}

// Giving a reply may call a peer, and waiting for that one comes in here again: the inner call has
// the rest given, since it may be what that peer waits for.
std::vector<std::shared_ptr<Connection>> RequestDispatcher::endTurn() {
    if (m_postponed.empty()) {
        return {};
    }
    ++m_endDepth;
    for (auto& [name, target] : m_targets) {
        if (target.hasPostponed) {
            endTurn(target);
        }
    }
    if (--m_endDepth > 0) {
        return takeServed();
    }
    for (auto& [name, target] : m_targets) {
        target.hasPostponed = false;
    }
    for (const std::shared_ptr<Connection>& connection : m_postponed) {
        connection->setHasPostponed(false);  // also when an invoker forgot it
    }
    return std::exchange(m_postponed, {});
}

/// Those that have got their replies.
std::vector<std::shared_ptr<Connection>> RequestDispatcher::takeServed() {
    std::vector<std::shared_ptr<Connection>> served;
    for (const std::shared_ptr<Connection>& connection : m_postponed) {
        if (!connection->hasPostponed()) {
            served.push_back(connection);
        }
    }
    std::erase_if(m_postponed, [](const auto& connection) { return !connection->hasPostponed(); });
    return served;
}

void RequestDispatcher::endTurn(const Target& target) {
    try {
        target.invoker->endTurn(target.executable);
    } catch (const std::exception& exception) {
        logExc(kComponent, kFile, __LINE__, "an invoker let an exception out", exception);
    } catch (...) {
        if (loggingOnUni(kLogError)) {
            logAppUni(kComponent, kFile, kLogError, __LINE__,
                      "an invoker let something out that is no standard exception");
        }
    }
}

const std::string& RequestDispatcher::currentChannel() const {
    static const std::string none;
    return m_depth > 0 ? m_levels[m_depth - 1]->peer->channel() : none;
}

// The payload is read before anything else is received; the frame may be gone when this returns.
void RequestDispatcher::invoke(const Target& target, Level& level, const std::string& interfaceName,
                               std::string_view payload) {
    try {
        target.invoker->handleMessage(target.executable, payload.data(),
                                      static_cast<int>(payload.size()), &level.response);
    } catch (const std::exception& exception) {
        logExc(kComponent, kFile, __LINE__, "an invoker let an exception out", exception);
        return;
    } catch (...) {
        if (loggingOnUni(kLogError)) {
            logAppUni(kComponent, kFile, kLogError, __LINE__,
                      "an invoker let something out that is no standard exception");
        }
        return;
    }
    if (!level.response.sent() && loggingOnUni(kLogError)) {
        logAppUni(kComponent, kFile, kLogError, __LINE__,
                  "no reply from the invoker of \"%s\" to %s, sent empty", interfaceName.c_str(),
                  level.peer->label().c_str());
    }
}

void RequestDispatcher::answerEmpty(Connection& connection, const Frame& frame) {
    FrameResponse response;
    response.begin(connection, frame);
    response.sendEmpty();
}

}  // namespace vireo
