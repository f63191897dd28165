#pragma once

#include <unistd.h>

#include <utility>

namespace vireo {

/// Owns one file descriptor and closes it. Movable; empty is -1.
class FileDescriptor {
public:
    FileDescriptor() = default;
    explicit FileDescriptor(int number) : m_number(number) {}
    FileDescriptor(FileDescriptor&& other) noexcept : m_number(std::exchange(other.m_number, -1)) {}
    FileDescriptor& operator=(FileDescriptor&& other) noexcept {
        if (this != &other) {
            reset();
            m_number = std::exchange(other.m_number, -1);
        }
        return *this;
    }
    ~FileDescriptor() { reset(); }

    int get() const { return m_number; }
    explicit operator bool() const { return m_number >= 0; }
    /// Gives it to somebody else, who closes it.
    int release() { return std::exchange(m_number, -1); }
    void reset() {
        if (m_number >= 0) {
            ::close(std::exchange(m_number, -1));
        }
    }

private:
    int m_number = -1;
};

}  // namespace vireo
