#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "files/ConfinedRoot.h"
#include "messages/FileDescriptor.h"

namespace vireo {

/// Removes what is in a directory below a root, with everything below it. No symbolic link is
/// followed, so nothing outside the directory is touched whatever it holds; a link is removed
/// itself. A tree may be of any depth: what lies very deep is moved up before it is removed.
class DirectoryEmptier {
public:
    /// `root` outlives it.
    explicit DirectoryEmptier(const ConfinedRoot& root) : m_root(root) {}

    /// Removes what a shell means by `directory/*`: names that begin with "." stay. What cannot be
    /// removed is left and does not stop the others. The reasons, in order; none when all is gone
    /// or there is no such directory. Throws a `StorageError` for what is no path below the root.
    std::vector<std::string> empty(const std::string& directory);

private:
    using Names = std::vector<std::string>;

    /// A directory that is being emptied.
    struct Level {
        FileDescriptor directory;
        std::string path;
        Names full;  ///< directories in it that are to be emptied first
    };

    void removeNames(Level& level, bool keepsHidden);
    void enter(const std::string& name);
    void moveUp(const std::string& name);
    void leave();
    void note(const Level& level, const std::string& name, int reason);

    const ConfinedRoot& m_root;
    std::vector<Level> m_levels;
    std::size_t m_moved = 0;
    Names m_failures;
};

}  // namespace vireo
