#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace vireo {

/// Reads numbers and texts here and there in an open file. What lies behind its end, or cannot be
/// read, is zeros.
class FileBytes {
public:
    /// `file` stays open as long as this object is used; its position does not matter and stays.
    explicit FileBytes(int file);

    std::uint64_t size() const { return m_size; }
    /// Whether the file has so many bytes from there.
    bool holds(std::uint64_t at, std::uint64_t count) const {
        return at <= m_size && count <= m_size - at;
    }
    std::string text(std::uint64_t at, std::size_t count) const;
    bool hasText(std::uint64_t at, std::string_view wanted) const {
        return text(at, wanted.size()) == wanted;
    }
    /// The number in `count` bytes, at most 8.
    std::uint64_t bigEndian(std::uint64_t at, unsigned count) const;
    std::uint64_t littleEndian(std::uint64_t at, unsigned count) const;

private:
    int m_file;
    std::uint64_t m_size = 0;
};

}  // namespace vireo
