#include "files/FileContents.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstring>
#include <vector>

#include "files/FilePlace.h"

namespace vireo {
namespace {

// A visitor's link may lead to the link of the phone's user. More is nobody's doing.
constexpr int kMostLinks = 4;
constexpr std::size_t kBlock = std::size_t{64} * 1024;

std::string targetOf(const FilePlace& place, const char* what, const std::string& path) {
    std::string target(PATH_MAX, '\0');
    const ssize_t length =
        ::readlinkat(place.directory.get(), place.name.c_str(), target.data(), target.size());
    if (length < 0) {
        failOn(what, path);
    }
    target.resize(static_cast<std::size_t>(length));
    return target.starts_with('/') ? target : path.substr(0, path.rfind('/') + 1) + target;
}

void writeAll(const FileDescriptor& file, const char* bytes, std::size_t count,
              const std::string& path) {
    while (count > 0) {
        const ssize_t written = ::write(file.get(), bytes, count);
        if (written > 0) {
            bytes += written;
            count -= static_cast<std::size_t>(written);
        } else if (errno != EINTR) {
            failOn("write", path);
        }
    }
}

}  // namespace

FileContents::FileContents(const ConfinedRoot& root, const char* what, const std::string& fullPath)
    : m_path(fullPath) {
    for (int links = 0; !m_file; ++links) {
        const FilePlace place(root, what, m_path, ConfinedRoot::Missing::eRefuse);
        // Non-blocking, so that a named pipe is refused instead of waited for.
        m_file = FileDescriptor(::openat(place.directory.get(), place.name.c_str(),
                                         O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
        if (!m_file && (errno != ELOOP || links == kMostLinks)) {
            failOn(what, fullPath);
        }
        if (!m_file) {
            m_path = targetOf(place, what, m_path);
        }
    }
    if (::fstat(m_file.get(), &m_status) != 0) {
        failOn(what, fullPath);
    }
    if (!S_ISREG(m_status.st_mode)) {
        failOn(what, fullPath, "it is no file");
    }
}

bool FileContents::isFile(const struct stat& other) const {
    return m_status.st_dev == other.st_dev && m_status.st_ino == other.st_ino;
}

bool FileContents::equals(const FileContents& other) const {
    if (isFile(other.m_status)) {
        return true;
    }
    if (m_status.st_size != other.m_status.st_size) {
        return false;
    }
    std::vector<char> mine(kBlock);
    std::vector<char> its(kBlock);
    for (std::uint64_t position = 0;;) {
        const std::size_t count = read(mine.data(), position);
        if (count != other.read(its.data(), position) ||
            std::memcmp(mine.data(), its.data(), count) != 0) {
            return false;
        }
        if (count == 0) {
            return true;
        }
        position += count;
    }
}

void FileContents::copyTo(const FileDescriptor& file, const std::string& path) const {
    std::vector<char> block(kBlock);
    std::uint64_t position = 0;
    while (const std::size_t count = read(block.data(), position)) {
        writeAll(file, block.data(), count, path);
        position += count;
    }
}

/// Fills the block but at the end of the file.
std::size_t FileContents::read(char* buffer, std::uint64_t position) const {
    std::size_t used = 0;
    while (used < kBlock) {
        const ssize_t count = ::pread(m_file.get(), buffer + used, kBlock - used,
                                      static_cast<off_t>(position + used));
        if (count == 0) {
            break;
        }
        if (count > 0) {
            used += static_cast<std::size_t>(count);
        } else if (errno != EINTR) {
            failOn("read", m_path);
        }
    }
    return used;
}

}  // namespace vireo
