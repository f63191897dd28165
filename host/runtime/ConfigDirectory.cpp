#include "runtime/ConfigDirectory.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <system_error>

#include "messages/FileDescriptor.h"

namespace vireo {
namespace {

bool isPlainName(const std::string& name) {
    return !name.empty() && name.front() != '.' &&
           name.find_first_of(std::string_view("/\0", 2)) == std::string::npos;
}

std::string tooLarge(std::uintmax_t largest) {
    return "it is larger than " + std::to_string(largest) + " bytes";
}

/// Reads to the end, which may lie elsewhere than the file's size said a moment ago.
bool readAll(int file, std::size_t expected, std::uintmax_t largest, std::string& content,
             std::string& error) {
    std::size_t used = 0;
    content.resize(expected + 1);
    for (;;) {
        const ssize_t count = ::read(file, content.data() + used, content.size() - used);
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count < 0) {
            error = std::generic_category().message(errno);
            return false;
        }
        if (count == 0) {
            content.resize(used);
            return true;
        }
        used += static_cast<std::size_t>(count);
        if (used > largest) {
            error = tooLarge(largest);
            return false;
        }
        if (used == content.size()) {
            content.resize(2 * used);
        }
    }
}

bool readFile(const std::string& path, std::uintmax_t largest, std::string& content,
              std::string& error) {
    // Non-blocking, so that a named pipe in the directory is refused instead of waited for.
    const FileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    struct stat status {};
    if (!file || ::fstat(file.get(), &status) != 0) {
        error = std::generic_category().message(errno);
        return false;
    }
    if (!S_ISREG(status.st_mode)) {
        error = "it is no regular file";
        return false;
    }
    if (static_cast<std::uintmax_t>(status.st_size) > largest) {
        error = tooLarge(largest);
        return false;
    }
    return readAll(file.get(), static_cast<std::size_t>(status.st_size), largest, content, error);
}

}  // namespace

bool ConfigDirectory::readConfigFile(const std::string& name, std::string& content,
                                     std::string& error) {
    if (!isPlainName(name)) {
        error = "\"" + name + "\" is no plain file name";
        return false;
    }
    const std::string path = (m_directory / name).string();
    std::string text;
    std::string reason;
    if (!readFile(path, m_largestFile, text, reason)) {
        error = "cannot read " + path + ": " + reason;
        return false;
    }
    content = std::move(text);
    return true;
}

}  // namespace vireo
