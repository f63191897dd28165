#include "messages/LockFile.h"

#include <fcntl.h>
#include <sys/file.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
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
    // A holder that could not write leaves the note of an earlier one.
    const pid_t process = digits.empty() ? 0 : static_cast<pid_t>(std::atol(digits.c_str()));
    const bool isAlive = process > 0 && (::kill(process, 0) == 0 || errno == EPERM);
    return isAlive ? "process " + digits : "another process";
}

/// For the reader of an error message alone: a failure to note it is no failure to lock.
void noteHolder(int file) {
    if (::ftruncate(file, 0) == 0) {
        ::dprintf(file, "%d\n", static_cast<int>(::getpid()));
    }
}

/// False with an `error` when somebody else has the lock, or there is none to have.
bool lock(int file, const std::string& path, int noteOfHolder, std::string& error) {
    if (::flock(file, LOCK_EX | LOCK_NB) == 0) {
        return true;
    }
    error = errno == EWOULDBLOCK
                ? path + " is locked by " + holderOf(noteOfHolder)
                : "cannot lock " + path + ": " + std::generic_category().message(errno);
    return false;
}

}  // namespace

std::optional<LockFile> LockFile::acquire(const std::string& path, std::string& error) {
    FileDescriptor file(::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600));
    if (!file) {
        error = "cannot open the lock file " + path + ": " + std::generic_category().message(errno);
        return std::nullopt;
    }
    if (!lock(file.get(), path, file.get(), error)) {
        return std::nullopt;
    }
    noteHolder(file.get());
    return LockFile(std::move(file));
}

std::optional<LockFile> LockFile::acquireDirectory(const std::string& directory,
                                                   std::string& error) {
    FileDescriptor itself(::open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!itself) {
        error = "cannot open " + directory + ": " + std::generic_category().message(errno);
        return std::nullopt;
    }
    const std::string notePath = directory + "/.lock";
    FileDescriptor note(
        ::open(notePath.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK, 0600));
    if (!note) {
        note = FileDescriptor(
            ::open(notePath.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK));
    }
    // The directory first: of two that start at the same time one must get both.
    if (!lock(itself.get(), directory, note.get(), error) ||
        (note && !lock(note.get(), notePath, note.get(), error))) {
        return std::nullopt;
    }
    if (note) {
        noteHolder(note.get());
    }
    LockFile held(std::move(itself));
    held.m_note = std::move(note);
    return held;
}

}  // namespace vireo
