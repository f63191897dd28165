#pragma once

#include <string>

#include "Visibility.h"

namespace vireo {

/// The phone's media control. Found through the context under "MediaControlServiceIfc"; the
/// implementation is also an `Executable`. Safe from every thread. Throws nothing.
class VIREO_API MediaControlServiceIfc {
public:
    enum eAudioKind { eRinger = 0, eMusicOnHold = 1 };

    virtual ~MediaControlServiceIfc() = default;
    /// Whether the phone can play the file from its beginning to its end: 0 when it can, 1 when
    /// not, 2 when the file cannot be read. May take as long as reading it takes.
    virtual int checkAudioFile(eAudioKind kind, const std::string& fullPath) = 0;
};

}  // namespace vireo
