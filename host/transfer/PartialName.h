#pragma once

#include <string_view>

namespace vireo {

/// How the name of every file begins that is not complete yet. Listings leave such names out.
inline constexpr std::string_view kPartialPrefix = ".vireo-part-";

/// Whether a name of a directory is that of an incomplete file.
constexpr bool isPartialName(std::string_view name) {
    return name.starts_with(kPartialPrefix);
}

}  // namespace vireo
