#pragma once

#include "service/Executable.h"
#include "services/MobilityServiceIfc.h"

namespace vireo {

/// Stands where the phone's mobility service will: it only notes in the log what it was told, at
/// information level.
class MobilityLog : public MobilityServiceIfc, public Executable {
public:
    void pictureDownloaded(const std::string& fileName) override;
    void pictureDeleted(const std::string& fileName) override;
    void refreshPictureClips() override;
};

}  // namespace vireo
