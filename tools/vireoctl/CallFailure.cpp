#include "CallFailure.h"

namespace vireo {

CallFailure CallFailure::of(const LocalMgmtClient& client, CallStatus status,
                            std::chrono::milliseconds timeout) {
    switch (status) {
        case CallStatus::eTimedOut:
            return {ExitCode::eNotReached,
                    "no answer within " + std::to_string(timeout.count()) + " ms"};
        case CallStatus::eDisconnected:
            return {ExitCode::eNotReached, client.closeReason()};
        case CallStatus::eEmptyReply:
            return {ExitCode::eRefused, std::string(describe(status)) +
                                            ": it could not serve this request, its log says why"};
        default:
            return {ExitCode::eRefused, describe(status)};
    }
}

}  // namespace vireo
