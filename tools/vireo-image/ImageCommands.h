#pragma once

#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "image/SoftwareVersion.h"

namespace vireo {

/// What `vireo-image` does. What fails throws `std::runtime_error` with one line that names the
/// file or field; a file is written whole or not at all.
class ImageCommands {
public:
    /// What a new image is made of.
    struct Recipe {
        std::string hardwareVariant;
        SoftwareVersion version;
        std::string keyFile;  ///< empty: not signed
        std::string payloadFile;
        std::string imageFile;
    };
    /// What an image is held to.
    struct Standard {
        std::vector<std::string> keyFiles;  ///< public ones
        std::string keyDirectory;           ///< with more; empty: none
        std::string hardwareVariant;        ///< empty: any
        std::optional<SoftwareVersion> oldestVersion;
    };

    explicit ImageCommands(std::ostream& out) : m_out(out) {}

    /// Makes NAME-private.pem, for its owner alone, and NAME.pem. Neither must be there.
    void keygen(const std::string& name);
    void create(const Recipe& recipe);
    /// Signs an image in the place of whoever signed it before.
    void sign(const std::string& keyFile, const std::string& imageFile);
    /// Prints what the header says. It is not checked whether that is true.
    void inspect(const std::string& imageFile);
    void verify(const Standard& standard, const std::string& imageFile);

private:
    std::ostream& m_out;
};

}  // namespace vireo
