#pragma once

#include <string>

#include "LocalMgmtClient.h"
#include "harness/Failure.h"
#include "harness/Phone.h"
#include "messages/FrameCodec.h"
#include "rivals/RawSocket.h"

namespace vireo::bench {

/// The size of a frame of the default protocol.
inline std::size_t frameSize(std::size_t payload) {
    return FrameCodec::kHeaderSize + std::string_view("vireo_rpcLocalMgmtIfc").size() + payload;
}

/// One request and its reply, which must be that of a success.
inline void exchange(LocalMgmtClient& client, const std::string& request, std::string& reply) {
    require(client.callRaw("vireo_rpc", request, reply) == CallStatus::eDone,
            "the phone does not answer");
    requireDone(reply);
}

/// Does it once, and gives the sizes of both frames.
inline RawSizes exchangeSizes(LocalMgmtClient& client, const std::string& request) {
    std::string reply;
    exchange(client, request, reply);
    return {frameSize(request.size()), frameSize(reply.size())};
}

}  // namespace vireo::bench
