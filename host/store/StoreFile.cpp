#include "store/StoreFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <system_error>
#include <utility>

namespace vireo {
namespace {

namespace fs = std::filesystem;

// The file itself comes first: should the renaming end half-way, what is left beside the missing
// file is found at the next start.
constexpr std::array<const char*, 4> kFileParts = {"", "-wal", "-journal", "-shm"};

std::string failureText(const char* what, const std::string& path, int errorNumber) {
    return std::string(what) + " " + path + ": " +
           std::error_code(errorNumber, std::generic_category()).message();
}

fs::path directoryOf(const fs::path& path) {
    const fs::path parent = path.parent_path();
    return parent.empty() ? fs::path(".") : parent;
}

// Makes a new or renamed entry survive a power failure. Some file systems cannot; so be it.
void syncDirectory(const fs::path& directory) {
    const int fd = ::open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd >= 0) {
        ::fsync(fd);
        ::close(fd);
    }
}

bool makeDirectory(const fs::path& directory, std::string& error) {
    std::error_code ignored;
    if (fs::is_directory(directory, ignored)) {
        return true;
    }
    const fs::path parent = directoryOf(directory);
    if (parent != directory && !makeDirectory(parent, error)) {
        return false;
    }
    if (::mkdir(directory.c_str(), 0700) != 0 && errno != EEXIST) {
        error = failureText("cannot make the directory", directory.string(), errno);
        return false;
    }
    syncDirectory(parent);
    return true;
}

bool exists(const std::string& path) {
    struct stat status {};
    return ::lstat(path.c_str(), &status) == 0;
}

bool isEmptyOrMissing(const std::string& path) {
    struct stat status {};
    return ::stat(path.c_str(), &status) != 0 || (S_ISREG(status.st_mode) && status.st_size == 0);
}

// Nothing that got the new name in the meantime is replaced.
bool renameToNew(const std::string& from, const std::string& to) {
    if (::renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0) {
        return true;
    }
    // Not every file system knows the flag.
    return errno == EINVAL && !exists(to) && std::rename(from.c_str(), to.c_str()) == 0;
}

bool isFreeName(const std::string& name) {
    return std::none_of(kFileParts.begin(), kFileParts.end(),
                        [&](const char* part) { return exists(name + part); });
}

}  // namespace

StoreFile::StoreFile(std::string path) : m_path(std::move(path)) {}

bool StoreFile::makeUsable(std::string& error) const {
    if (m_path.empty()) {
        error = "the store has no path";
        return false;
    }
    const fs::path directory = directoryOf(m_path);
    if (!makeDirectory(directory, error)) {
        return false;
    }
    struct stat status {};
    if (::stat(m_path.c_str(), &status) == 0) {
        if (!S_ISREG(status.st_mode)) {
            error = m_path + " is not an ordinary file";
            return false;
        }
        // Not by opening it: closing it again would drop the locks of this process on the file.
        if (::faccessat(AT_FDCWD, m_path.c_str(), R_OK | W_OK, AT_EACCESS) != 0) {
            error = failureText("cannot read and write", m_path, errno);
            return false;
        }
        return true;
    }
    const int fd = ::open(m_path.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
    if (fd < 0) {
        error = failureText("cannot make", m_path, errno);
        return false;
    }
    ::close(fd);
    syncDirectory(directory);
    return true;
}

bool StoreFile::isEmpty() const {
    struct stat status {};
    return ::stat(m_path.c_str(), &status) == 0 && S_ISREG(status.st_mode) && status.st_size == 0;
}

bool StoreFile::isMissing() const {
    struct stat status {};
    return !m_path.empty() && ::stat(m_path.c_str(), &status) != 0 && errno == ENOENT;
}

bool StoreFile::isRegular() const {
    struct stat status {};
    return ::stat(m_path.c_str(), &status) == 0 && S_ISREG(status.st_mode);
}

bool StoreFile::hasOrphanedLog() const {
    return isEmptyOrMissing(m_path) && !isEmptyOrMissing(m_path + "-wal");
}

std::string StoreFile::setAside(std::string& error) const {
    std::string name;
    unsigned number = 0;
    do {
        name = m_path + ".damaged-" + std::to_string(++number);
    } while (!isFreeName(name));

    for (const char* part : kFileParts) {
        const std::string from = m_path + part;
        if (exists(from) && !renameToNew(from, name + part)) {
            error = failureText("cannot set aside", from, errno);
            return {};
        }
    }
    syncDirectory(directoryOf(m_path));
    return name;
}

}  // namespace vireo
