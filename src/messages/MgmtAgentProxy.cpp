#include "messages/MgmtAgentProxy.h"

#include <utility>

#include "data/ManageableData.h"
#include "service/ProtocolAdapter.h"
#include "service/Serializer.h"
#include "service/Service.h"

namespace vireo {
namespace {

constexpr int kAgentText = 4;

}  // namespace

void MgmtAgentProxy::initProxy(ProxyRequest& request) {
    m_request = &request;
    request.setProtocol(VireoProtocols::TEXT);
    request.setMsgType(kAgentText);
}

MgmtAgentIfc* MgmtAgentProxy::getService() {
    MgmtAgentIfc* known = m_service;
    if (known == nullptr && !m_noDirectService) {
        known = dynamic_cast<MgmtAgentIfc*>(m_request->findDirectService());
        m_service = known;
    }
    return known;
}

bool MgmtAgentProxy::setData(ManageableData& record) {
    MgmtAgentIfc* service = getService();
    return service != nullptr ? service->setData(record) : exchange("setData:", record);
}

bool MgmtAgentProxy::getData(ManageableData& record) {
    MgmtAgentIfc* service = getService();
    return service != nullptr ? service->getData(record) : exchange("getData:", record);
}

bool MgmtAgentProxy::manageableDataChanged(ManageableData& record) {
    std::string message("manageableDataChanged:");
    record.appendText(message);
    return m_request->sendOneWay(message);
}

bool MgmtAgentProxy::resetUserData() {
    m_request->sendOneWay("resetUserData:");
    return true;
}

bool MgmtAgentProxy::exchange(const char* command, ManageableData& record) {
    std::string message(command);
    record.appendText(message);
    std::string reply;
    m_request->sendAndWait(message, reply, ProxyRequest::mDefaultTimeout);
    stripResponse(reply);
    bool result = false;
    ManageableData answer;
    if (!Serializer::deserialize(reply, result) || !answer.deserialize(reply)) {
        return false;
    }
    record.clearAll();
    record.overlay(std::move(answer));
    return result;
}

void MgmtAgentProxy::stripResponse(std::string& text) {
    // Deliberate: a text without any colon is kept whole, "not found" plus one being the start.
    text.erase(0, text.find(':') + 1);
}

}  // namespace vireo
