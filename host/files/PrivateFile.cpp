#include "files/PrivateFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>
#include <utility>

#include "device/StorageError.h"
#include "files/SmallFile.h"

namespace vireo {
namespace {

using Missing = ConfinedRoot::Missing;

constexpr std::uintmax_t kLargest = 4096;

[[noreturn]] void fail(const std::string& path) {
    throw StorageError("cannot write \"" + path + "\": " + std::generic_category().message(errno));
}

void writeAll(int file, const std::string& content, const std::string& path) {
    for (std::size_t done = 0; done < content.size();) {
        const ssize_t count = ::write(file, content.data() + done, content.size() - done);
        if (count < 0 && errno != EINTR) {
            fail(path);
        }
        done += count < 0 ? 0 : static_cast<std::size_t>(count);
    }
    if (::fsync(file) != 0) {
        fail(path);
    }
}

/// What root makes belongs to whoever owns the root directory.
void handOver(int descriptor, int root, const std::string& path) {
    struct stat owner {};
    if (::geteuid() == 0 && ::fstat(root, &owner) == 0 &&
        ::fchown(descriptor, owner.st_uid, owner.st_gid) != 0) {
        fail(path);
    }
}

/// Runs `work`; a `StorageError` becomes false and its text.
template <class Work>
bool tried(std::string& error, Work&& work) {
    try {
        work();
        return true;
    } catch (const StorageError& failure) {
        error = failure.what();
        return false;
    }
}

}  // namespace

PrivateFile::PrivateFile(ConfinedRoot root, const std::string& directory, std::string name)
    : m_root(std::move(root)),
      m_directory(ConfinedRoot::split(directory + '/').names),
      m_name(std::move(name)) {}

std::string PrivateFile::path() const {
    std::string path = m_root.path();
    for (const std::string& each : m_directory) {
        path += each + '/';
    }
    return path + m_name;
}

bool PrivateFile::replace(const std::string& content, std::string& error) const {
    return tried(error, [&] {
        const FileDescriptor root = m_root.openDirectory({}, Missing::eRefuse);
        const FileDescriptor directory = m_root.openDirectory(m_directory, Missing::eMake);
        if (!m_directory.empty()) {
            handOver(directory.get(), root.get(), path());
        }
        const std::string fresh = '.' + m_name + ".new";
        ::unlinkat(directory.get(), fresh.c_str(), 0);  // left by a crash
        const FileDescriptor file(::openat(directory.get(), fresh.c_str(),
                                           O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
        if (!file) {
            fail(path());
        }
        handOver(file.get(), root.get(), path());
        writeAll(file.get(), content, path());
        if (::renameat(directory.get(), fresh.c_str(), directory.get(), m_name.c_str()) != 0) {
            fail(path());
        }
        ConfinedRoot::synchronize(directory, path());
    });
}

bool PrivateFile::isThere() const {
    struct stat status {};
    return ::lstat(path().c_str(), &status) == 0 || errno != ENOENT;
}

bool PrivateFile::read(std::string& content, std::string& error) const {
    if (!isThere()) {
        content.clear();
        return true;
    }
    return SmallFile::read(path(), kLargest, content, error, SmallFile::Readers::eOwnerAlone);
}

bool PrivateFile::remove(std::string& error) const {
    return !isThere() || tried(error, [&] {
        const FileDescriptor directory = m_root.openDirectory(m_directory, Missing::eRefuse);
        if (::unlinkat(directory.get(), m_name.c_str(), 0) != 0 && errno != ENOENT) {
            fail(path());
        }
        ConfinedRoot::synchronize(directory, path());
    });
}

}  // namespace vireo
