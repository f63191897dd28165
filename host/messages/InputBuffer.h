#pragma once

#include <cstddef>
#include <memory>
#include <span>
#include <string_view>

namespace vireo {

/// The bytes that a peer has sent and that are not handled yet, in one piece. Its memory follows
/// what has arrived, never what a header promises, and shrinks again after a long frame.
class InputBuffer {
public:
    static constexpr std::size_t kReadSize = 64U << 10U;

    std::string_view content() const { return {m_memory.get() + m_begin, m_end - m_begin}; }
    /// Takes bytes off the front. Views into them stay readable until `room` is called.
    void consume(std::size_t count) { m_begin += count; }

    /// Where the next bytes go: 1 to `kReadSize` bytes. Moves the content, so that views end here.
    std::span<char> room();
    /// The first `count` bytes of `room` have been filled.
    void filled(std::size_t count) { m_end += count; }

private:
    void moveTo(std::size_t capacity);

    std::unique_ptr<char[]> m_memory;
    std::size_t m_capacity = 0;
    std::size_t m_begin = 0;
    std::size_t m_end = 0;
};

}  // namespace vireo
