#pragma once

#include <sys/types.h>

#include <span>
#include <string>

#include "messages/FileDescriptor.h"

namespace vireo {

/// A file that has its name only when it is complete and on the disk. Until then it lies beside it
/// under a hidden name, and goes if it is not kept. What fails throws `std::runtime_error` with a
/// text that names the file.
class NewFile {
public:
    enum class Existing { eReplace, eRefuse };

    NewFile(std::string path, mode_t mode);
    NewFile(const NewFile&) = delete;
    NewFile& operator=(const NewFile&) = delete;
    ~NewFile();

    /// At the end of what is there.
    void append(std::span<const unsigned char> bytes) const;
    void append(const std::string& text) const;
    /// Over what is there.
    void put(std::span<const unsigned char> bytes, off_t offset) const;
    /// Gives it its name.
    void keep(Existing existing);

private:
    std::string m_path;
    std::string m_hidden;
    FileDescriptor m_file;
};

}  // namespace vireo
