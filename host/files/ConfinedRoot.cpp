#include "files/ConfinedRoot.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <string_view>
#include <system_error>

#include "device/StorageError.h"

namespace vireo {
namespace {

constexpr int kDirectoryFlags = O_RDONLY | O_DIRECTORY | O_CLOEXEC;

std::string failure(const std::string& path, const std::string& reason) {
    return "cannot use \"" + path + "\": " + reason;
}

[[noreturn]] void fail(const std::string& path, const std::string& reason) {
    throw StorageError(failure(path, reason));
}

std::string withoutNul(std::string path) {
    for (std::size_t at = 0; (at = path.find('\0', at)) != std::string::npos;) {
        path.replace(at, 1, "\\0");
    }
    return path;
}

std::string reasonOf(int number) {
    return number == ENOTDIR || number == ELOOP
               ? "there is something else than a directory of that name"
               : std::generic_category().message(number);
}

}  // namespace

ConfinedRoot::ConfinedRoot(const std::filesystem::path& root)
    : m_path(std::filesystem::absolute(root).lexically_normal().string()) {
    if (!m_path.ends_with('/')) {
        m_path += '/';
    }
    m_names = split(m_path).names;
}

PathNames ConfinedRoot::split(const std::string& path) {
    if (path.find('\0') != std::string::npos) {
        fail(withoutNul(path), "there is a NUL byte in it");
    }
    PathNames parts;
    parts.isDirectory = true;
    for (std::size_t begin = 0; begin < path.size();) {
        const std::size_t end = std::min(path.find('/', begin), path.size());
        const std::string_view name = std::string_view(path).substr(begin, end - begin);
        if (name == "..") {
            fail(path, "\"..\" may lead anywhere");
        }
        parts.isDirectory = end < path.size() || name == ".";
        if (!name.empty() && name != ".") {
            parts.names.emplace_back(name);
        }
        begin = end + 1;
    }
    return parts;
}

PathNames ConfinedRoot::locate(const std::string& fullPath) const {
    PathNames parts = split(fullPath);
    const std::span<const std::string> directories = parts.directories();
    if (!fullPath.starts_with('/') || directories.size() < m_names.size() ||
        !std::equal(m_names.begin(), m_names.end(), directories.begin())) {
        fail(fullPath, "it does not lie below " + m_path);
    }
    parts.names.erase(parts.names.begin(),
                      parts.names.begin() + static_cast<std::ptrdiff_t>(m_names.size()));
    return parts;
}

std::string ConfinedRoot::placeOf(const std::string& phonePath) const {
    return phonePath.starts_with('/') && !phonePath.starts_with(m_path)
               ? m_path + phonePath.substr(1)
               : phonePath;
}

FileDescriptor ConfinedRoot::openDirectory(std::span<const std::string> names,
                                           Missing missing) const {
    FileDescriptor directory(::open(m_path.c_str(), kDirectoryFlags));
    if (!directory) {
        fail(m_path, reasonOf(errno));
    }
    std::string path = m_path;
    for (const std::string& name : names) {
        path += name + '/';
        directory = enter(directory, name, path, missing);
    }
    return directory;
}

FileDescriptor ConfinedRoot::enter(const FileDescriptor& parent, const std::string& name,
                                   const std::string& path, Missing missing) const {
    const auto open = [&] {
        return FileDescriptor(::openat(parent.get(), name.c_str(), kDirectoryFlags | O_NOFOLLOW));
    };
    FileDescriptor directory = open();
    if (!directory && errno == ENOENT && missing == Missing::eMake) {
        // Somebody else may make it at the same time.
        if (::mkdirat(parent.get(), name.c_str(), 0700) != 0 && errno != EEXIST) {
            fail(path, std::generic_category().message(errno));
        }
        synchronize(parent, path);
        directory = open();
    }
    if (!directory && errno == ENOENT) {
        throw MissingDirectoryError(failure(path, reasonOf(errno)));
    }
    if (!directory) {
        fail(path, reasonOf(errno));
    }
    return directory;
}

void ConfinedRoot::synchronize(const FileDescriptor& directory, const std::string& path) {
    // Some file systems know nothing of it for directories.
    if (::fsync(directory.get()) != 0 && errno != EINVAL) {
        fail(path, std::generic_category().message(errno));
    }
}

}  // namespace vireo
