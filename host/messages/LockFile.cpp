#include "messages/LockFile.h"

#include <fcntl.h>
#include <sys/file.h>

#include <cerrno>
#include <cstdio>
#include <system_error>

namespace vireo {
namespace {

std::string holderOf(int file) {
    char text[16] = {};
    const ssize_t length = ::pread(file, text, sizeof text - 1, 0);
    std::string digits;
    for (ssize_t i = 0; i < length && text[i] >= '0' && text[i] <= '9'; ++i) {
        digits += text[i];
    }
    return digits.empty() ? "another process" : "process " + digits;
}

/// For the reader of an error message alone: a failure to note it is no failure to lock.
void noteHolder(int file) {
    if (::ftruncate(file, 0) == 0) {
        ::dprintf(file, "%d\n", static_cast<int>(::getpid()));
    }
}

}  // namespace

std::optional<LockFile> LockFile::acquire(const std::string& path, std::string& error) {
    FileDescriptor file(::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600));
    if (!file) {
        error = "cannot open the lock file " + path + ": " + std::generic_category().message(errno);
        return std::nullopt;
    }
    if (::flock(file.get(), LOCK_EX | LOCK_NB) != 0) {
        error = errno == EWOULDBLOCK
                    ? path + " is locked by " + holderOf(file.get())
                    : "cannot lock " + path + ": " + std::generic_category().message(errno);
        return std::nullopt;
    }
    noteHolder(file.get());
    return LockFile(std::move(file));
}

}  // namespace vireo
