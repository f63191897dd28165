#pragma once

#include "Visibility.h"

namespace vireo {

/// How a call to the service ended.
enum class CallStatus {
    eDone,            ///< the reply is there
    eEmptyReply,      ///< the service could not serve the message; it has logged why
    eMalformedReply,  ///< a reply came that is not one of the called method
    eTimedOut,        ///< no reply in time; the service may have done the work all the same
    eDisconnected,    ///< the connection ended, now or earlier; it does not come back by itself
    eTooLarge,        ///< more than one message carries; nothing was sent
    eNotCarried,      ///< a text of the call is none that the protocol can carry; nothing was sent
    eNoAgent,         ///< the client was connected without an agent; nothing was sent
    eNoCallback,      ///< the client was connected without a callback; nothing was sent
};

/// A few words for a person, such as "no answer in time". Static text.
VIREO_API const char* describe(CallStatus status);

}  // namespace vireo
