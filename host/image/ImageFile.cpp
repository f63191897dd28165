#include "image/ImageFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <system_error>
#include <utility>

#include "device/StorageError.h"

namespace vireo {
namespace {

std::string systemReason() {
    return std::generic_category().message(errno);
}

/// Reads until `block` is full or the file has ended; negative with errno.
ssize_t readFully(int file, std::span<unsigned char> block, std::uint64_t offset) {
    std::size_t done = 0;
    while (done < block.size()) {
        const ssize_t count = ::pread(file, block.data() + done, block.size() - done,
                                      static_cast<off_t>(offset + done));
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count <= 0) {
            return count < 0 ? count : static_cast<ssize_t>(done);
        }
        done += static_cast<std::size_t>(count);
    }
    return static_cast<ssize_t>(done);
}

}  // namespace

std::optional<ImageFile> ImageFile::open(const std::string& path, std::string& reason) {
    // Non-blocking, so that a named pipe is refused instead of waited for.
    FileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    if (!file) {
        reason = systemReason();
        return std::nullopt;
    }
    return adopt(std::move(file), reason);
}

std::optional<ImageFile> ImageFile::adopt(FileDescriptor file, std::string& reason) {
    struct stat status {};
    if (::fstat(file.get(), &status) != 0) {
        reason = systemReason();
        return std::nullopt;
    }
    if (!S_ISREG(status.st_mode)) {
        reason = "it is no file";
        return std::nullopt;
    }
    ImageFile image;
    const ssize_t count = readFully(file.get(), image.m_bytes, 0);
    if (count < 0) {
        reason = systemReason();
        return std::nullopt;
    }
    const auto size = static_cast<std::uint64_t>(status.st_size);
    if (static_cast<std::size_t>(count) < image.m_bytes.size()) {
        reason = "it is no software image: it has " + std::to_string(size) +
                 " bytes, a header alone has " + std::to_string(ImageHeader::kSize);
        return std::nullopt;
    }
    const auto header = ImageHeader::decode(image.m_bytes, reason);
    if (!header) {
        return std::nullopt;
    }
    if (header->fileSize() != size) {
        reason = "its payload size is " + std::to_string(header->payloadSize) + ", but " +
                 std::to_string(size - ImageHeader::kSize) + " bytes follow the header: it is " +
                 (size < header->fileSize() ? "cut short" : "longer than announced");
        return std::nullopt;
    }
    image.m_header = *header;
    image.m_file = std::move(file);
    return image;
}

std::size_t ImageFile::readPayload(std::uint64_t offset, std::span<unsigned char> block) const {
    const std::uint64_t left = m_header.payloadSize - std::min(offset, m_header.payloadSize);
    const auto wanted = static_cast<std::size_t>(std::min<std::uint64_t>(left, block.size()));
    const ssize_t count = readFully(m_file.get(), block.first(wanted), ImageHeader::kSize + offset);
    if (count < 0) {
        throw StorageError("cannot read the image: " + systemReason());
    }
    if (static_cast<std::size_t>(count) != wanted) {
        throw StorageError("the image has become shorter meanwhile");
    }
    return wanted;
}

}  // namespace vireo
