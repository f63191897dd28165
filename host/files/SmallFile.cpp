#include "files/SmallFile.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <system_error>
#include <utility>

#include "messages/FileDescriptor.h"

namespace vireo {
namespace {

std::string tooLarge(std::uintmax_t largest) {
    return "it is larger than " + std::to_string(largest) + " bytes";
}

/// Why the file is not to be read; empty when it is.
std::string objection(const struct stat& status, std::uintmax_t largest,
                      SmallFile::Readers readers) {
    if (!S_ISREG(status.st_mode)) {
        return "it is no regular file";
    }
    if (readers == SmallFile::Readers::eOwnerAlone && (status.st_mode & (S_IRWXG | S_IRWXO)) != 0) {
        return "others than its owner may use it (its mode should be 0600)";
    }
    return static_cast<std::uintmax_t>(status.st_size) > largest ? tooLarge(largest) : "";
}

/// Reads to the end, which may lie elsewhere than the file's size said a moment ago.
bool readAll(int file, std::size_t expected, std::uintmax_t largest, std::string& content,
             std::string& reason) {
    std::size_t used = 0;
    content.resize(expected + 1);
    for (;;) {
        const ssize_t count = ::read(file, content.data() + used, content.size() - used);
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count < 0) {
            reason = std::generic_category().message(errno);
            return false;
        }
        if (count == 0) {
            content.resize(used);
            return true;
        }
        used += static_cast<std::size_t>(count);
        if (used > largest) {
            reason = tooLarge(largest);
            return false;
        }
        if (used == content.size()) {
            content.resize(2 * used);
        }
    }
}

}  // namespace

bool SmallFile::read(const std::string& path, std::uintmax_t largest, std::string& content,
                     std::string& error, Readers readers) {
    // Non-blocking, so that a named pipe is refused instead of waited for.
    const FileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    struct stat status {};
    std::string reason;
    std::string text;
    if (!file || ::fstat(file.get(), &status) != 0) {
        reason = std::generic_category().message(errno);
    } else {
        reason = objection(status, largest, readers);
    }
    if (!reason.empty() ||
        !readAll(file.get(), static_cast<std::size_t>(status.st_size), largest, text, reason)) {
        error = "cannot read " + path + ": " + reason;
        return false;
    }
    content = std::move(text);
    return true;
}

}  // namespace vireo
