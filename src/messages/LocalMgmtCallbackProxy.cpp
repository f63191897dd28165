#include "messages/LocalMgmtCallbackProxy.h"

#include "LogMacros.h"
#include "service/ProtocolAdapter.h"
#include "service/Serializer.h"

namespace vireo {
namespace {

constexpr const char* kComponent = "LocalMgmtCallbackProxy";

}  // namespace

void LocalMgmtCallbackProxy::initProxy(ProxyRequest& request) {
    m_request = &request;
    // Deliberate: the type of message stays as the framework set it, unlike an agent's.
    request.setProtocol(VireoProtocols::TEXT);
}

bool LocalMgmtCallbackProxy::informDownloadProgress(int progress, std::string filepath) {
    VIREO_LOG(kComponent, kLogDebug, "informDownloadProgress called. progress: %d, filepath: %s",
              progress, filepath.c_str());
    std::string message;
    Serializer::serialize(message, "informDownloadProgress");
    Serializer::serialize(message, progress);
    Serializer::serialize(message, filepath);
    return m_request->sendOneWay(message);
}

bool LocalMgmtCallbackProxy::informDownloadCompletion(std::string filepath) {
    VIREO_LOG(kComponent, kLogDebug, "informDownloadCompletion called. filepath: %s",
              filepath.c_str());
    std::string message;
    Serializer::serialize(message, "informDownloadCompletion");
    Serializer::serialize(message, filepath);
    return m_request->sendOneWay(message);
}

bool LocalMgmtCallbackProxy::requestShutdown() {
    VIREO_LOG(kComponent, kLogDebug, "requestShutdown called");
    std::string message;
    Serializer::serialize(message, "requestShutdown");
    std::string reply;
    m_request->sendAndWait(message, reply, ProxyRequest::mDefaultTimeout);
    std::string command;
    std::string answer;
    if (Serializer::deserialize(reply, command)) {
        Serializer::deserialize(reply, answer);
    }
    if (answer != "true") {
        VIREO_LOG(kComponent, kLogDebug, "requestShutdown: command: %s response: %s",
                  command.c_str(), answer.c_str());
    }
    return answer == "true";
}

}  // namespace vireo
