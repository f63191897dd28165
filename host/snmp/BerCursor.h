#pragma once

#include <cstddef>
#include <string_view>

namespace vireo {

/// Walks along the elements of an encoded message. False when an element goes on behind the end.
class BerCursor {
public:
    explicit BerCursor(std::string_view bytes) : m_bytes(bytes) {}

    /// Goes on to the first element inside this one.
    bool enter() {
        std::size_t begin = 0;
        std::size_t length = 0;
        const bool isWhole = content(begin, length);
        m_position = isWhole ? begin : m_position;
        return isWhole;
    }
    /// Goes on to the element so many behind this one.
    bool skip(unsigned count) {
        std::size_t begin = 0;
        std::size_t length = 0;
        for (; count > 0 && content(begin, length); --count) {
            m_position = begin + length;
        }
        return count == 0;
    }
    /// The first byte of this one.
    std::size_t tag() const { return m_position < m_bytes.size() ? byteAt(m_position) : 0; }
    /// Where what it holds is.
    bool content(std::size_t& begin, std::size_t& length) const {
        if (m_position + 2 > m_bytes.size()) {
            return false;
        }
        begin = m_position + 2;
        length = byteAt(m_position + 1);
        if (length >= kLong) {
            const std::size_t count = length - kLong;
            if (count > 4 || begin + count > m_bytes.size()) {
                return false;
            }
            length = 0;
            for (const std::size_t end = begin + count; begin < end; ++begin) {
                length = (length << 8U) | byteAt(begin);
            }
        }
        return length <= m_bytes.size() - begin;
    }

private:
    static constexpr std::size_t kLong = 0x80;  // the length takes bytes of its own

    std::size_t byteAt(std::size_t position) const {
        return static_cast<unsigned char>(m_bytes[position]);
    }

    std::string_view m_bytes;
    std::size_t m_position = 0;
};

}  // namespace vireo
