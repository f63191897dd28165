#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include "image/ImageHeader.h"
#include "messages/FileDescriptor.h"

namespace vireo {

/// A software image that was opened and is as long as its header says. The header is read once and
/// kept, so what was checked is what is used; of the file nothing is read but the payload, to its
/// announced end.
class ImageFile {
public:
    /// Nothing, with a `reason` that does not name the file, when there is no such image.
    static std::optional<ImageFile> open(const std::string& path, std::string& reason);
    /// The same of a file that is open for reading.
    static std::optional<ImageFile> adopt(FileDescriptor file, std::string& reason);

    const ImageHeader& header() const { return m_header; }
    const ImageHeader::Bytes& headerBytes() const { return m_bytes; }

    /// Reads the payload from `offset` on, as much as fits into `block`, less at its end alone.
    /// Throws a `StorageError` when it cannot be read or has become shorter.
    std::size_t readPayload(std::uint64_t offset, std::span<unsigned char> block) const;

private:
    FileDescriptor m_file;
    ImageHeader::Bytes m_bytes{};
    ImageHeader m_header;
};

}  // namespace vireo
