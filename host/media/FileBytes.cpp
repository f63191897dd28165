#include "media/FileBytes.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>

namespace vireo {

FileBytes::FileBytes(int file) : m_file(file) {
    struct stat status {};
    if (::fstat(file, &status) == 0) {
        m_size = static_cast<std::uint64_t>(status.st_size);
    }
}

std::string FileBytes::text(std::uint64_t at, std::size_t count) const {
    std::string bytes(count, '\0');
    if (!holds(at, count) || ::pread(m_file, bytes.data(), count, static_cast<off_t>(at)) !=
                                 static_cast<ssize_t>(count)) {
        bytes.assign(count, '\0');
    }
    return bytes;
}

std::uint64_t FileBytes::bigEndian(std::uint64_t at, unsigned count) const {
    std::uint64_t number = 0;
    for (const char byte : text(at, count)) {
        number = number << 8U | static_cast<unsigned char>(byte);
    }
    return number;
}

std::uint64_t FileBytes::littleEndian(std::uint64_t at, unsigned count) const {
    std::string bytes = text(at, count);
    std::reverse(bytes.begin(), bytes.end());
    std::uint64_t number = 0;
    for (const char byte : bytes) {
        number = number << 8U | static_cast<unsigned char>(byte);
    }
    return number;
}

}  // namespace vireo
