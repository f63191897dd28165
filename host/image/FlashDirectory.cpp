#include "image/FlashDirectory.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

#include "device/StorageError.h"

namespace vireo {
namespace {

using Missing = ConfinedRoot::Missing;

constexpr int kFileFlags = O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK;

[[noreturn]] void fail(const std::string& what) {
    throw StorageError("cannot " + what + ": " + std::generic_category().message(errno));
}

// What is less is often continued in the same page, which would be written twice.
constexpr std::size_t kWorthwhile = std::size_t{64} << 10U;

/// Lets the disk begin, so that less is left to wait for. Only a hint.
void beginWriting([[maybe_unused]] int file, [[maybe_unused]] std::uint64_t offset,
                  [[maybe_unused]] std::size_t size) {
#ifdef SYNC_FILE_RANGE_WRITE
    if (size >= kWorthwhile) {
        ::sync_file_range(file, static_cast<off_t>(offset), static_cast<off_t>(size),
                          SYNC_FILE_RANGE_WRITE);
    }
#endif
}

}  // namespace

FlashDirectory::FlashDirectory(const std::filesystem::path& deviceRoot,
                               const std::string& directory)
    : m_device(deviceRoot),
      m_names(ConfinedRoot::split(directory + '/').names),
      m_path(m_device.path() + directory + '/') {}

bool FlashDirectory::isThere() const {
    std::error_code ignored;
    const std::filesystem::path path = m_path.substr(0, m_path.size() - 1);
    return std::filesystem::symlink_status(path, ignored).type() !=
           std::filesystem::file_type::not_found;
}

FileDescriptor FlashDirectory::directory(Missing missing) const {
    return m_device.openDirectory(m_names, missing);
}

std::string FlashDirectory::pathOf(const std::string& name) const {
    return '"' + m_path + name + '"';
}

std::optional<FlashPort::File> FlashDirectory::open(const std::string& name) {
    if (!isThere()) {
        return std::nullopt;
    }
    const FileDescriptor flash = directory(Missing::eRefuse);
    const int file = ::openat(flash.get(), name.c_str(), O_RDONLY | kFileFlags);
    if (file < 0 && errno == ENOENT) {
        return std::nullopt;
    }
    if (file < 0) {
        fail("open " + pathOf(name));
    }
    return file;
}

FlashPort::File FlashDirectory::create(const std::string& name) {
    const FileDescriptor flash = directory(Missing::eMake);
    ::unlinkat(flash.get(), name.c_str(), 0);  // a link, it might be
    const int file =
        ::openat(flash.get(), name.c_str(), O_RDWR | O_CREAT | O_EXCL | kFileFlags, 0600);
    if (file < 0) {
        fail("make " + pathOf(name));
    }
    return file;
}

void FlashDirectory::close(File file) noexcept {
    ::close(file);
}

std::uint64_t FlashDirectory::size(File file) {
    struct stat status {};
    if (::fstat(file, &status) != 0) {
        fail("read from flash memory");
    }
    if (!S_ISREG(status.st_mode)) {
        throw StorageError("there is something else than a file in " + m_path);
    }
    return static_cast<std::uint64_t>(status.st_size);
}

std::size_t FlashDirectory::read(File file, std::uint64_t offset, std::span<unsigned char> bytes) {
    std::size_t done = 0;
    while (done < bytes.size()) {
        const ssize_t count = ::pread(file, bytes.data() + done, bytes.size() - done,
                                      static_cast<off_t>(offset + done));
        if (count == 0) {
            break;
        }
        if (count < 0 && errno != EINTR) {
            fail("read from flash memory");
        }
        done += count < 0 ? 0 : static_cast<std::size_t>(count);
    }
    return done;
}

void FlashDirectory::write(File file, std::uint64_t offset, std::span<const unsigned char> bytes) {
    std::size_t done = 0;
    while (done < bytes.size()) {
        const ssize_t count = ::pwrite(file, bytes.data() + done, bytes.size() - done,
                                       static_cast<off_t>(offset + done));
        if (count < 0 && errno != EINTR) {
            fail("write to flash memory");
        }
        done += count < 0 ? 0 : static_cast<std::size_t>(count);
    }
    beginWriting(file, offset, bytes.size());
}

void FlashDirectory::sync(File file) {
    if (::fsync(file) != 0) {
        fail("write to flash memory");
    }
    ::posix_fadvise(file, 0, 0, POSIX_FADV_DONTNEED);
}

void FlashDirectory::rename(const std::string& from, const std::string& to) {
    const FileDescriptor flash = directory(Missing::eRefuse);
    if (::renameat(flash.get(), from.c_str(), flash.get(), to.c_str()) != 0) {
        fail("rename " + pathOf(from));
    }
}

void FlashDirectory::remove(const std::string& name) {
    if (!isThere()) {
        return;
    }
    const FileDescriptor flash = directory(Missing::eRefuse);
    if (::unlinkat(flash.get(), name.c_str(), 0) != 0 && errno != ENOENT) {
        fail("remove " + pathOf(name));
    }
}

void FlashDirectory::syncNames() {
    ConfinedRoot::synchronize(directory(Missing::eRefuse), m_path);
}

std::uint64_t FlashDirectory::freeBytes() {
    const FileDescriptor flash =
        isThere() ? directory(Missing::eRefuse) : m_device.openDirectory({}, Missing::eRefuse);
    struct statvfs status {};
    if (::fstatvfs(flash.get(), &status) != 0) {
        fail("find out how much room there is in " + m_path);
    }
    return static_cast<std::uint64_t>(status.f_bavail) * status.f_frsize;
}

}  // namespace vireo
