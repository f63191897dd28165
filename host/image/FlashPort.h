#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <utility>

namespace vireo {

/// The storage that banks and the boot marker lie on: a few named files. Every access of a start, a
/// confirmation and a burn comes through here, so that a test can let any of them fail. What fails
/// throws a `StorageError` that says what and why. Not used by two threads at the same time, but
/// for `freeBytes`.
class FlashPort {
public:
    using File = int;

    virtual ~FlashPort() = default;

    /// Opens a file for reading; nothing when there is none of that name.
    virtual std::optional<File> open(const std::string& name) = 0;
    /// Makes a new, empty file in the place of one of that name, for writing and reading.
    virtual File create(const std::string& name) = 0;
    virtual void close(File file) noexcept = 0;

    virtual std::uint64_t size(File file) = 0;
    /// Reads as much as fits into `bytes`, less at the end of the file alone.
    virtual std::size_t read(File file, std::uint64_t offset, std::span<unsigned char> bytes) = 0;
    /// Writes all of `bytes`.
    virtual void write(File file, std::uint64_t offset, std::span<const unsigned char> bytes) = 0;
    /// Returns when the content is on stable storage. What is read afterwards comes from there, as
    /// far as the system can be told so.
    virtual void sync(File file) = 0;

    /// Gives a file another name, in one step and in the place of one that has it. It survives a
    /// loss of power after `syncNames`, and may before.
    virtual void rename(const std::string& from, const std::string& to) = 0;
    /// Removes a file, if there is one of that name.
    virtual void remove(const std::string& name) = 0;
    virtual void syncNames() = 0;

    /// How many bytes a new file can have. Safe from every thread.
    virtual std::uint64_t freeBytes() = 0;
};

/// Closes a file of flash memory with itself.
class FlashFile {
public:
    FlashFile(FlashPort& flash, FlashPort::File file) : m_flash(&flash), m_file(file) {}
    FlashFile(FlashFile&& other) noexcept
        : m_flash(std::exchange(other.m_flash, nullptr)), m_file(other.m_file) {}
    FlashFile& operator=(FlashFile&&) = delete;
    ~FlashFile() {
        if (m_flash != nullptr) {
            m_flash->close(m_file);
        }
    }

    FlashPort::File get() const { return m_file; }

private:
    FlashPort* m_flash;
    FlashPort::File m_file;
};

}  // namespace vireo
