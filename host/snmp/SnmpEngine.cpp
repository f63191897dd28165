#include "snmp/SnmpEngine.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <cstdio>
#include <system_error>

#include "files/SmallFile.h"
#include "messages/FileDescriptor.h"

namespace vireo {
namespace {

constexpr std::uintmax_t kLargestFile = 64;
constexpr unsigned kMostBoots = 0x7FFFFFFF;

std::string makeId() {
    constexpr std::size_t kLongestName = 27;
    char name[kLongestName + 1] = {};
    ::gethostname(name, kLongestName);
    return std::string("\x80\x00\x7E\xD9\x04", 5) + (name[0] != '\0' ? name : "phone");
}

/// 0 when it was not counted yet.
unsigned readBoots(const std::string& path, std::string& error) {
    std::string text;
    unsigned boots = 0;
    if (::access(path.c_str(), F_OK) == 0 && SmallFile::read(path, kLargestFile, text, error)) {
        std::from_chars(text.data(), text.data() + text.size(), boots);
    }
    return boots;
}

bool writeBoots(const std::string& path, unsigned boots, std::string& error) {
    const std::string text = std::to_string(boots) + "\n";
    const std::string next = path + ".new";
    const FileDescriptor file(::open(next.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600));
    const bool isWritten =
        file &&
        ::write(file.get(), text.data(), text.size()) == static_cast<ssize_t>(text.size()) &&
        ::fsync(file.get()) == 0 && std::rename(next.c_str(), path.c_str()) == 0;
    if (!isWritten) {
        error = "cannot write " + path + ": " + std::generic_category().message(errno);
    }
    return isWritten;
}

}  // namespace

SnmpEngine SnmpEngine::start(const std::string& path, std::string& error) {
    const unsigned before = readBoots(path, error);
    const unsigned boots = before < kMostBoots ? before + 1 : kMostBoots;
    writeBoots(path, boots, error);
    return {makeId(), boots};
}

}  // namespace vireo
