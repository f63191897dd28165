#pragma once

#include <gtest/gtest.h>

#include <string>
#include <utility>

#include "data/ManageableData.h"
#include "messages/RpcAdapter.h"
#include "service/Method.h"
#include "support/FramePeer.h"
#include "support/ProcessState.h"
#include "support/RunningPhone.h"

namespace vireo::test {

inline constexpr const char* kLocalInterface = "LocalMgmtIfc";
/// Generous: what 200 peers may make the service keep is far below.
inline constexpr long kMostMemoryKilobytes = 512L << 10;

inline std::string rpcText(const Method& method) {
    std::string text;
    RpcAdapter::encodeText(method, text);
    return text;
}

inline Method methodWith(const char* name, const char* parameter, Parameter::directions direction,
                         std::string value) {
    Method method(name, Method::eRequest);
    method.addStringParameter(parameter, direction, std::move(value));
    return method;
}

/// A message that any honest peer may send: which schema has "ringer-melody"?
inline std::string honestMessage() {
    return rpcText(methodWith("findSchemaName", "nodeId", Parameter::eIn, "ringer-melody"));
}

/// The reply to it.
inline std::string honestReply() {
    Method reply("findSchemaName", Method::eResponse);
    reply.addStringParameter("schemaName", Parameter::eOut, "text");
    return rpcText(reply);
}

inline std::string requestFrame(std::uint32_t correlation, const std::string& payload) {
    return FramePeer::frame(FrameKind::eRequest, correlation, payload, VireoProtocols::DEFAULT,
                            kLocalInterface);
}

/// A connection to a running phone on which anything can be sent.
class StormPeer : public FramePeer {
public:
    explicit StormPeer(const RunningPhone& phone) : FramePeer(phone.socket()) {
        EXPECT_EQ(hello("storm-*").rfind("storm-", 0), 0U);
    }

    /// The payload of the one reply to a message.
    std::string send(const std::string& message, const char* protocol = VireoProtocols::DEFAULT) {
        return ask(message, kLocalInterface, protocol);
    }

    /// Whether an honest message gets its proper reply, and no other reply came before it.
    bool isServed() { return send(honestMessage()) == honestReply(); }

    /// The result of a call that carries a record, and the record of its reply.
    std::pair<bool, ManageableData> exchange(const char* method, std::string record) {
        std::pair<bool, ManageableData> answer;
        Method reply;
        const std::string text = send(
            rpcText(methodWith(method, "manageableData", Parameter::eInOut, std::move(record))));
        EXPECT_TRUE(RpcAdapter::decodeText(text, reply)) << text.substr(0, 100);
        if (!reply.parameters().empty()) {
            answer.first = reply.getBoolParameter("result", Parameter::eOut);
            EXPECT_TRUE(answer.second.deserialize(
                reply.getStringParameter("manageableData", Parameter::eOut)));
        }
        return answer;
    }
};

inline void expectBoundedMemory(const RunningPhone& phone) {
    const long peak = peakMemory(phone.process->pid());
    EXPECT_GT(peak, 0) << "vireod runs";
    if (!kIsSanitized) {
        EXPECT_LT(peak, kMostMemoryKilobytes);
    }
}

}  // namespace vireo::test
