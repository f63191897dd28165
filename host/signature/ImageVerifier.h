#pragma once

#include <cstdint>
#include <limits>
#include <optional>
#include <string>

#include "image/ImageFile.h"
#include "signature/TrustedKeys.h"

namespace vireo {

/// Whether an image is one that this phone may be given.
class ImageVerifier {
public:
    /// What the phone demands of it.
    struct Demands {
        std::string hardwareVariant;
        std::optional<SoftwareVersion> oldestVersion;                    ///< nothing: any
        std::uint64_t room = std::numeric_limits<std::uint64_t>::max();  ///< bytes for the file
    };

    static constexpr std::size_t kBlock = std::size_t{512} << 10U;

    /// Everything but the payload. False with a `reason` that names the field.
    static bool checkHeader(const ImageFile& image, const Demands& demands, const TrustedKeys& keys,
                            std::string& reason);
    /// Reads the payload and compares its digest. False with a `reason`. Throws a `StorageError`
    /// when it cannot be read.
    static bool checkPayload(const ImageFile& image, std::string& reason);

    static std::string wrongDigest() { return "its payload is not the one that was signed"; }
};

}  // namespace vireo
