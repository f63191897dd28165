#pragma once

#include <string>

#include "Visibility.h"

namespace vireo {

/// Users who move between phones. Found through the context under "MobilityServiceIfc"; the
/// implementation is also an `Executable`. Safe from every thread. Throws nothing, does not wait.
class VIREO_API MobilityServiceIfc {
public:
    virtual ~MobilityServiceIfc() = default;
    /// The current user has received a picture of that name, without directory.
    virtual void pictureDownloaded(const std::string& fileName) = 0;
    /// A picture of the current user is gone, or with an empty name all of them.
    virtual void pictureDeleted(const std::string& fileName) = 0;
    /// The pictures of the phone book are to be read again.
    virtual void refreshPictureClips() = 0;
};

}  // namespace vireo
