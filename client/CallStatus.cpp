#include "CallStatus.h"

namespace vireo {

const char* describe(CallStatus status) {
    switch (status) {
        case CallStatus::eDone:
            return "done";
        case CallStatus::eEmptyReply:
            return "the service gave an empty reply";
        case CallStatus::eMalformedReply:
            return "the reply is malformed";
        case CallStatus::eTimedOut:
            return "no answer in time";
        case CallStatus::eDisconnected:
            return "the connection to the service ended";
        case CallStatus::eTooLarge:
            return "larger than one message may be";
        case CallStatus::eNotCarried:
            return "the call holds a character that the chosen protocol cannot carry";
        case CallStatus::eNoAgent:
            return "the client has no agent";
        case CallStatus::eNoCallback:
            return "the client has no callback";
    }
    return "unknown call status";
}

}  // namespace vireo
