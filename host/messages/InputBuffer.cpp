#include "messages/InputBuffer.h"

#include <algorithm>
#include <cstring>

namespace vireo {
namespace {

// With less room than this a read is not worth its system call.
constexpr std::size_t kLeastRoom = InputBuffer::kReadSize / 4;

}  // namespace

void InputBuffer::moveTo(std::size_t capacity) {
    auto memory = std::make_unique_for_overwrite<char[]>(capacity);
    if (m_end > m_begin) {
        std::memcpy(memory.get(), m_memory.get() + m_begin, m_end - m_begin);
    }
    m_end -= m_begin;
    m_begin = 0;
    m_memory = std::move(memory);
    m_capacity = capacity;
}

std::span<char> InputBuffer::room() {
    const std::size_t used = m_end - m_begin;
    if (used == 0) {
        m_begin = 0;
        m_end = 0;
    }
    if (m_capacity == 0 || (used == 0 && m_capacity > kReadSize)) {
        moveTo(kReadSize);
    } else if (m_capacity - used < kLeastRoom) {
        moveTo(2 * m_capacity);
    } else if (m_begin > 0) {
        // What is left is the start of one frame, which stays at the front from now on: no byte is
        // moved here twice.
        std::memmove(m_memory.get(), m_memory.get() + m_begin, used);
        m_begin = 0;
        m_end = used;
    }
    return {m_memory.get() + m_end, std::min(kReadSize, m_capacity - m_end)};
}

}  // namespace vireo
