#pragma once

#include <filesystem>
#include <span>
#include <string>
#include <vector>

#include "messages/FileDescriptor.h"

namespace vireo {

/// The names that a path consists of.
struct PathNames {
    std::vector<std::string> names;
    bool isDirectory = false;  ///< it ends in "/"

    /// The names of the directories alone.
    std::span<const std::string> directories() const {
        return std::span(names).first(names.size() - (isDirectory ? 0 : 1));
    }
};

/// Everything below one directory, and nothing else: on the way to it no symbolic link is followed,
/// so no tree, whoever made it, leads outside. Where the root itself lies may be a link. Stateless
/// but for its path; safe from every thread. What fails throws a `StorageError` that names the
/// path, for a missing directory a `MissingDirectoryError`.
class ConfinedRoot {
public:
    enum class Missing { eRefuse, eMake };

    /// A relative root is relative to the current directory of now. It need not be there yet.
    explicit ConfinedRoot(const std::filesystem::path& root);

    /// Absolute; ends in "/".
    const std::string& path() const { return m_path; }

    /// Takes a path apart; refused are ".." and NUL bytes.
    static PathNames split(const std::string& path);
    /// The same of an absolute path below the root, without the names of the root.
    PathNames locate(const std::string& fullPath) const;
    /// A path of the phone as the path below the root that it means. One that is below the root
    /// already stays, and so does a relative one.
    std::string placeOf(const std::string& phonePath) const;

    /// Opens the directory that is reached by `names` from the root, for reading. Missing ones are
    /// made, mode 0700, and are on stable storage then, or refused.
    FileDescriptor openDirectory(std::span<const std::string> names, Missing missing) const;
    /// Sees to it that what was changed in an open directory survives a loss of power.
    static void synchronize(const FileDescriptor& directory, const std::string& path);

private:
    FileDescriptor enter(const FileDescriptor& parent, const std::string& name,
                         const std::string& path, Missing missing) const;

    std::string m_path;
    std::vector<std::string> m_names;
};

}  // namespace vireo
