#include "NewFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <stdexcept>
#include <system_error>
#include <utility>

namespace vireo {
namespace {

[[noreturn]] void fail(const std::string& path) {
    throw std::runtime_error("cannot write " + path + ": " +
                             std::generic_category().message(errno));
}

/// The directory of the file; its entries are what a power failure may forget.
void synchronizeDirectory(const std::string& path) {
    const std::filesystem::path parent = std::filesystem::path(path).parent_path();
    const FileDescriptor directory(
        ::open(parent.empty() ? "." : parent.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!directory || (::fsync(directory.get()) != 0 && errno != EINVAL)) {
        fail(path);
    }
}

}  // namespace

NewFile::NewFile(std::string path, mode_t mode) : m_path(std::move(path)) {
    const std::filesystem::path whole(m_path);
    m_hidden = (whole.parent_path() / ("." + whole.filename().string() + ".XXXXXX")).string();
    m_file = FileDescriptor(::mkostemp(m_hidden.data(), O_CLOEXEC));  // mode 0600
    if (!m_file) {
        m_hidden.clear();
        fail(m_path);
    }
    const mode_t mask = ::umask(0);
    ::umask(mask);
    if (::fchmod(m_file.get(), mode & ~mask) != 0) {
        fail(m_path);
    }
}

NewFile::~NewFile() {
    if (!m_hidden.empty()) {
        ::unlink(m_hidden.c_str());
    }
}

void NewFile::append(std::span<const unsigned char> bytes) const {
    while (!bytes.empty()) {
        const ssize_t count = ::write(m_file.get(), bytes.data(), bytes.size());
        if (count < 0 && errno != EINTR) {
            fail(m_path);
        }
        bytes = bytes.subspan(count < 0 ? 0 : static_cast<std::size_t>(count));
    }
}

void NewFile::append(const std::string& text) const {
    append(std::span(reinterpret_cast<const unsigned char*>(text.data()), text.size()));
}

void NewFile::put(std::span<const unsigned char> bytes, off_t offset) const {
    if (::pwrite(m_file.get(), bytes.data(), bytes.size(), offset) !=
        static_cast<ssize_t>(bytes.size())) {
        fail(m_path);
    }
}

void NewFile::keep(Existing existing) {
    if (::fsync(m_file.get()) != 0) {
        fail(m_path);
    }
    // A link fails where a name is taken; a rename takes its place.
    const int result = existing == Existing::eRefuse ? ::link(m_hidden.c_str(), m_path.c_str())
                                                     : ::rename(m_hidden.c_str(), m_path.c_str());
    if (result != 0) {
        fail(m_path);
    }
    if (existing == Existing::eRefuse) {
        ::unlink(m_hidden.c_str());
    }
    m_hidden.clear();
    synchronizeDirectory(m_path);
}

}  // namespace vireo
