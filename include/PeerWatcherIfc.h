#pragma once

#include "Visibility.h"

namespace vireo {

class Executable;

/// Who wants to know when peers go. Called on the message thread.
class VIREO_API PeerWatcherIfc {
public:
    virtual ~PeerWatcherIfc() = default;
    /// The peer that `proxy` stands for has closed its channel. The proxy stays, for a process that
    /// comes back under the name.
    virtual void peerLeft(Executable& proxy) = 0;
};

}  // namespace vireo
