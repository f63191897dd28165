#include "transfer/PartialFile.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <mutex>
#include <system_error>

#include "device/StorageError.h"
#include "files/PartialName.h"

namespace vireo {
namespace {

// What the disk may be behind; the final sync of a large file is short then.
constexpr std::uint64_t kWriteBackStep = 8ULL * 1024 * 1024;
// Smaller writes cost more, and so do larger ones, for which the kernel looks for large pages.
constexpr std::size_t kWriteBlock = std::size_t{128} * 1024;
constexpr int kNameAttempts = 100;

std::string withReason(const std::string& what, int number) {
    return what + ": " + std::generic_category().message(number);
}

FileDescriptor openDirectory(const ConfinedRoot& root, const std::string& path,
                             std::string& error) {
    try {
        return root.openDirectory(root.locate(path).directories(), ConfinedRoot::Missing::eRefuse);
    } catch (const StorageError& failure) {
        error = failure.what();
        return {};
    }
}

}  // namespace

PartialFile::PartialFile(const ConfinedRoot& root, FileDescriptor directory,
                         const std::string& finalPath)
    : m_root(root),
      m_directory(std::move(directory)),
      m_directoryPath(finalPath.substr(0, finalPath.rfind('/') + 1)),
      m_finalName(finalPath.substr(m_directoryPath.size())) {}

PartialFile::PartialFile(PartialFile&& other) noexcept
    : m_root(other.m_root),
      m_directory(std::move(other.m_directory)),
      m_directoryPath(std::move(other.m_directoryPath)),
      m_finalName(std::move(other.m_finalName)),
      m_hiddenName(std::exchange(other.m_hiddenName, {})),
      m_file(std::move(other.m_file)),
      m_pending(std::move(other.m_pending)),
      m_written(other.m_written),
      m_writtenBack(other.m_writtenBack) {}

PartialFile::~PartialFile() {
    if (!m_hiddenName.empty()) {
        ::unlinkat(m_directory.get(), m_hiddenName.c_str(), 0);
    }
}

std::optional<PartialFile> PartialFile::create(const ConfinedRoot& root,
                                               const std::string& finalPath, std::string& error) {
    FileDescriptor directory = openDirectory(root, finalPath, error);
    if (!directory) {
        return std::nullopt;
    }
    PartialFile file(root, std::move(directory), finalPath);
    struct stat present {};
    if (::fstatat(file.m_directory.get(), file.m_finalName.c_str(), &present,
                  AT_SYMLINK_NOFOLLOW) == 0 &&
        !S_ISREG(present.st_mode) && !S_ISLNK(present.st_mode)) {
        error = finalPath + " is there and is no file";
        return std::nullopt;
    }
    if (!file.open(error)) {
        return std::nullopt;
    }
    return file;
}

bool PartialFile::open(std::string& error) {
    for (int i = 0; i < kNameAttempts && !m_file; ++i) {
        std::string name = newPartialName();
        m_file = FileDescriptor(::openat(m_directory.get(), name.c_str(),
                                         O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666));
        if (m_file) {
            m_hiddenName = std::move(name);
        } else if (errno != EEXIST) {
            break;
        }
    }
    if (!m_file) {
        error = withReason("cannot write to " + m_directoryPath, errno);
    }
    return static_cast<bool>(m_file);
}

bool PartialFile::append(const char* bytes, std::size_t count, std::string& error) {
    while (count > 0) {
        if (m_pending.empty() && count >= kWriteBlock) {
            if (!write(bytes, kWriteBlock, error)) {
                return false;
            }
            bytes += kWriteBlock;
            count -= kWriteBlock;
            continue;
        }
        const std::size_t taken = std::min(count, kWriteBlock - m_pending.size());
        m_pending.append(bytes, taken);
        bytes += taken;
        count -= taken;
        if (m_pending.size() == kWriteBlock && !flush(error)) {
            return false;
        }
    }
    return true;
}

bool PartialFile::flush(std::string& error) {
    const bool isWritten = write(m_pending.data(), m_pending.size(), error);
    m_pending.clear();
    return isWritten;
}

bool PartialFile::write(const char* bytes, std::size_t count, std::string& error) {
    while (count > 0) {
        const ssize_t written = ::write(m_file.get(), bytes, count);
        if (written > 0) {
            bytes += written;
            count -= static_cast<std::size_t>(written);
            m_written += static_cast<std::uint64_t>(written);
        } else if (errno != EINTR) {
            error = withReason("cannot write to " + m_directoryPath, errno);
            return false;
        }
    }
    startWriteBack();
    return true;
}

void PartialFile::startWriteBack() {
    if (m_written - m_writtenBack >= kWriteBackStep) {
        ::sync_file_range(m_file.get(), static_cast<off_t>(m_writtenBack),
                          static_cast<off_t>(m_written - m_writtenBack), SYNC_FILE_RANGE_WRITE);
        m_writtenBack = m_written;
    }
}

bool PartialFile::restart(std::string& error) {
    if (::ftruncate(m_file.get(), 0) != 0 || ::lseek(m_file.get(), 0, SEEK_SET) != 0) {
        error = withReason("cannot write to " + m_directoryPath, errno);
        return false;
    }
    m_pending.clear();
    m_written = 0;
    m_writtenBack = 0;
    return true;
}

bool PartialFile::isInPlace() const {
    std::string ignored;
    const FileDescriptor directory = openDirectory(m_root, m_directoryPath + m_finalName, ignored);
    struct stat named {};
    struct stat own {};
    return directory &&
           ::fstatat(directory.get(), m_hiddenName.c_str(), &named, AT_SYMLINK_NOFOLLOW) == 0 &&
           ::fstat(m_file.get(), &own) == 0 && named.st_dev == own.st_dev &&
           named.st_ino == own.st_ino;
}

bool PartialFile::takeName(const std::atomic<bool>& isDiscarded, std::string& error) {
    const std::lock_guard lock(namesLock());
    if (isDiscarded) {
        error = kDiscarded;
        return false;
    }
    if (::renameat(m_directory.get(), m_hiddenName.c_str(), m_directory.get(),
                   m_finalName.c_str()) != 0) {
        error = withReason("cannot write " + m_directoryPath + m_finalName, errno);
        return false;
    }
    m_hiddenName.clear();
    return true;
}

bool PartialFile::commit(const std::atomic<bool>& isDiscarded, std::string& error) {
    if (!flush(error)) {
        return false;
    }
    if (::fsync(m_file.get()) != 0) {
        error = withReason("cannot write to " + m_directoryPath, errno);
        return false;
    }
    if (!takeName(isDiscarded, error)) {
        return false;
    }
    // A file system that cannot sync a directory says EINVAL.
    if (::fsync(m_directory.get()) != 0 && errno != EINVAL) {
        error = withReason("cannot write to " + m_directoryPath, errno);
        return false;
    }
    return true;
}

}  // namespace vireo
