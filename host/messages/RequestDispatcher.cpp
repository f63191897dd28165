#include "messages/RequestDispatcher.h"

#include <exception>

#include "log/Log.h"
#include "messages/Connection.h"
#include "service/Invoker.h"

namespace vireo {
namespace {

constexpr const char* kComponent = "RequestDispatcher";
constexpr const char* kFile = "./host/messages/RequestDispatcher";

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
    m_response.begin(connection, frame);
    invoke(target->second, connection, frame);
    m_response.sendEmpty();
}

void RequestDispatcher::invoke(const Target& target, const Connection& connection,
                               const Frame& frame) {
    try {
        target.invoker->handleMessage(target.executable, frame.payload.data(),
                                      static_cast<int>(frame.payload.size()), &m_response);
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
    if (!m_response.sent() && loggingOnUni(kLogError)) {
        logAppUni(kComponent, kFile, kLogError, __LINE__,
                  "no reply from the invoker of \"%.*s\" to %s, sent empty",
                  static_cast<int>(frame.interfaceName.size()), frame.interfaceName.data(),
                  connection.label().c_str());
    }
}

void RequestDispatcher::answerEmpty(Connection& connection, const Frame& frame) {
    m_response.begin(connection, frame);
    m_response.sendEmpty();
}

}  // namespace vireo
