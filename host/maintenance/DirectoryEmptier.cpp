#include "maintenance/DirectoryEmptier.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <memory>
#include <string_view>
#include <system_error>
#include <utility>

#include "device/StorageError.h"

namespace vireo {
namespace {

constexpr std::size_t kMostOpen = 32;
constexpr std::string_view kMoved = ".vireo-emptied-";

struct DirectoryCloser {
    void operator()(DIR* stream) const { ::closedir(stream); }
};

/// Whether nothing of that name is in the directory any more; else errno has the reason.
bool isRemoved(const FileDescriptor& directory, const std::string& name) {
    if (::unlinkat(directory.get(), name.c_str(), 0) == 0 || errno == ENOENT) {
        return true;
    }
    // Which of the two is said of a directory depends on the file system.
    return (errno == EISDIR || errno == EPERM) &&
           (::unlinkat(directory.get(), name.c_str(), AT_REMOVEDIR) == 0 || errno == ENOENT);
}

/// The names of a directory without "." and "..", all of them before any is removed: what is read
/// meanwhile may leave some out. Nothing, with errno, when it cannot be read.
std::vector<std::string> namesIn(const FileDescriptor& directory) {
    std::vector<std::string> names;
    const std::unique_ptr<DIR, DirectoryCloser> stream(
        ::fdopendir(::fcntl(directory.get(), F_DUPFD_CLOEXEC, 0)));
    errno = stream ? 0 : errno;
    while (const dirent* const entry = stream ? ::readdir(stream.get()) : nullptr) {
        const std::string_view name = entry->d_name;
        if (name != "." && name != "..") {
            names.emplace_back(name);
        }
    }
    return names;
}

bool isThere(const std::string& path) {
    struct stat status {};
    return ::lstat(path.c_str(), &status) == 0 || errno != ENOENT;
}

}  // namespace

void DirectoryEmptier::note(const Level& level, const std::string& name, int reason) {
    m_failures.push_back("cannot remove \"" + level.path + name +
                         "\": " + std::generic_category().message(reason));
}

/// Removes what can be removed at once.
void DirectoryEmptier::removeNames(Level& level, bool keepsHidden) {
    Names names = namesIn(level.directory);
    if (errno != 0) {
        note(level, "", errno);
    }
    for (std::string& name : names) {
        if ((keepsHidden && name.starts_with('.') && !name.starts_with(kMoved)) ||
            isRemoved(level.directory, name)) {
            continue;
        }
        if (errno == ENOTEMPTY || errno == EEXIST) {
            level.full.push_back(std::move(name));
        } else {
            note(level, name, errno);
        }
    }
}

void DirectoryEmptier::enter(const std::string& name) {
    const Level& parent = m_levels.back();
    FileDescriptor directory(::openat(parent.directory.get(), name.c_str(),
                                      O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    if (!directory) {
        note(parent, name, errno);
        return;
    }
    Level level{std::move(directory), parent.path + name + '/', {}};
    removeNames(level, false);
    m_levels.push_back(std::move(level));
}

/// To the top, under a name that no other has.
void DirectoryEmptier::moveUp(const std::string& name) {
    Level& top = m_levels.front();
    const Level& level = m_levels.back();
    for (;;) {
        std::string moved = std::string(kMoved) + std::to_string(m_moved++);
        if (::renameat2(level.directory.get(), name.c_str(), top.directory.get(), moved.c_str(),
                        RENAME_NOREPLACE) == 0) {
            top.full.push_back(std::move(moved));
            return;
        }
        if (errno != EEXIST) {
            note(level, name, errno);
            return;
        }
    }
}

void DirectoryEmptier::leave() {
    const std::string path = m_levels.back().path;
    m_levels.pop_back();
    if (m_levels.empty()) {
        return;
    }
    const Level& parent = m_levels.back();
    const std::string name = path.substr(parent.path.size(), path.size() - parent.path.size() - 1);
    if (!isRemoved(parent.directory, name)) {
        note(parent, name, errno);
    }
}

std::vector<std::string> DirectoryEmptier::empty(const std::string& directory) {
    const Names names = ConfinedRoot::split(directory + '/').names;
    std::string path = m_root.path();
    for (const std::string& name : names) {
        path += name + '/';
    }
    if (!isThere(path.substr(0, path.size() - 1))) {
        return {};
    }
    try {
        Level top{m_root.openDirectory(names, ConfinedRoot::Missing::eRefuse), path, {}};
        removeNames(top, true);
        m_levels.push_back(std::move(top));
        while (!m_levels.empty()) {
            Names& full = m_levels.back().full;
            if (full.empty()) {
                leave();
                continue;
            }
            const std::string name = std::move(full.back());
            full.pop_back();
            m_levels.size() < kMostOpen ? enter(name) : moveUp(name);
        }
        ConfinedRoot::synchronize(m_root.openDirectory(names, ConfinedRoot::Missing::eRefuse),
                                  path);
    } catch (const StorageError& failure) {
        m_failures.emplace_back(failure.what());
    }
    m_levels.clear();
    return std::exchange(m_failures, {});
}

}  // namespace vireo
