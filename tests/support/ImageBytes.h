#pragma once

#include <algorithm>
#include <random>
#include <string>

#include "image/ImageHeader.h"
#include "support/Files.h"

namespace vireo::test {

/// Bytes that look like nothing, the same for the same seed.
inline std::string noise(std::size_t size, unsigned seed = 1) {
    std::mt19937 random(seed);
    std::string bytes(size, '\0');
    std::generate(bytes.begin(), bytes.end(), [&] { return static_cast<char>(random()); });
    return bytes;
}

inline std::string textOfBytes(const ImageHeader::Bytes& bytes) {
    return {bytes.begin(), bytes.end()};
}

}  // namespace vireo::test
