#pragma once

#include <mutex>
#include <string>
#include <string_view>

namespace vireo {

/// How the name of every file begins that is not complete yet. Listings leave such names out.
inline constexpr std::string_view kPartialPrefix = ".vireo-part-";

/// Whether a name of a directory is that of an incomplete file.
constexpr bool isPartialName(std::string_view name) {
    return name.starts_with(kPartialPrefix);
}

/// Such a name that nobody else in this process gets. Safe from every thread.
std::string newPartialName();

/// Held while a received file takes its name, and while what bears a name is looked at and replaced
/// or removed for what it is. A leaf.
std::mutex& namesLock();

/// Removes the incomplete files and links that an earlier run left below a directory, each with a
/// log line. Links are not followed. A directory that is not there holds none.
void removePartialFiles(const std::string& rootDirectory);

}  // namespace vireo
