#include "image/PlainImage.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <exception>
#include <system_error>
#include <utility>

#include "device/AdminProgressCallback.h"
#include "image/PlainHeader.h"
#include "log/Log.h"

namespace vireo {
namespace {

constexpr const char* kComponent = "PlainImage";
constexpr const char* kFile = "./host/image/PlainImage";

constexpr std::size_t kBlock = 256U << 10U;

using Missing = ConfinedRoot::Missing;

[[noreturn]] void fail(const std::string& what) {
    throw StorageError(what + ": " + std::generic_category().message(errno));
}

/// Opens an image for phones of a variant. Empty with an `error`.
FileDescriptor openImage(const std::string& path, const std::string& hardwareVariant,
                         std::uint64_t& size, std::string& error) {
    // Non-blocking, so that a named pipe is refused instead of waited for.
    FileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    struct stat status {};
    std::string reason;
    if (!file || ::fstat(file.get(), &status) != 0) {
        reason = std::generic_category().message(errno);
    } else if (!S_ISREG(status.st_mode)) {
        reason = "it is no file";
    } else if (const auto header = PlainHeader::read(file.get(), reason)) {
        size = static_cast<std::uint64_t>(status.st_size);
        if (header->hardwareVariant != hardwareVariant) {
            reason = "it is for \"" + header->hardwareVariant + "\", this phone is \"" +
                     hardwareVariant + '"';
        } else if (header->payloadSize == 0) {
            reason = "there is nothing in it";
        } else if (header->fileSize() != size) {
            reason = "it has " + std::to_string(size) + " bytes instead of " +
                     std::to_string(header->fileSize());
        }
    }
    if (!reason.empty()) {
        error = "cannot use the image \"" + path + "\": " + reason;
        file.reset();
    }
    return file;
}

/// A file under its hidden name, which goes if it is not kept.
class HiddenFile {
public:
    explicit HiddenFile(const FileDescriptor& directory) : m_directory(directory) {
        ::unlinkat(directory.get(), PlainImage::kHiddenName, 0);
        m_file =
            FileDescriptor(::openat(directory.get(), PlainImage::kHiddenName,
                                    O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600));
        if (!m_file) {
            fail("cannot make the new image");
        }
    }
    HiddenFile(const HiddenFile&) = delete;
    HiddenFile& operator=(const HiddenFile&) = delete;
    ~HiddenFile() {
        if (!m_isKept) {
            ::unlinkat(m_directory.get(), PlainImage::kHiddenName, 0);
        }
    }

    void write(const char* bytes, std::size_t count) const {
        while (count > 0) {
            const ssize_t written = ::write(m_file.get(), bytes, count);
            if (written < 0 && errno != EINTR) {
                fail("cannot write the new image");
            }
            const std::size_t done = written < 0 ? 0 : static_cast<std::size_t>(written);
            bytes += done;
            count -= done;
        }
    }
    /// Gives it its name when its content is on stable storage.
    void keep() {
        if (::fsync(m_file.get()) != 0) {
            fail("cannot write the new image");
        }
        if (::renameat(m_directory.get(), PlainImage::kHiddenName, m_directory.get(),
                       PlainImage::kName) != 0) {
            fail("cannot replace the old image");
        }
        m_isKept = true;
    }

private:
    const FileDescriptor& m_directory;
    FileDescriptor m_file;
    bool m_isKept = false;
};

std::size_t readBlock(const FileDescriptor& image, std::vector<char>& block) {
    ssize_t count = -1;
    do {
        count = ::read(image.get(), block.data(), block.size());
    } while (count < 0 && errno == EINTR);
    if (count < 0) {
        fail("cannot read the image");
    }
    return static_cast<std::size_t>(count);
}

}  // namespace

PlainImage::PlainImage(const std::filesystem::path& deviceRoot, const std::string& flashDirectory,
                       std::string hardwareVariant)
    : m_device(deviceRoot),
      m_flash(ConfinedRoot::split(flashDirectory + '/').names),
      m_hardwareVariant(std::move(hardwareVariant)) {
    try {
        const FileDescriptor flash = m_device.openDirectory(m_flash, Missing::eRefuse);
        ::unlinkat(flash.get(), kHiddenName, 0);
    } catch (const StorageError&) {
        // Deliberate: without flash memory nothing was left there.
    }
}

bool PlainImage::verify(const std::string& path, const std::string& hardwareVariant,
                        std::string& error) {
    std::uint64_t size = 0;
    return static_cast<bool>(openImage(path, hardwareVariant, size, error));
}

bool PlainImage::burn(const std::string& path, AdminProgressCallback& progress,
                      std::string& error) {
    const std::lock_guard lock(m_mutex);
    if (m_stopping || m_active) {
        error = "cannot burn the image \"" + path +
                (m_stopping ? "\": the phone is being stopped" : "\": another burn is under way");
        return false;
    }
    std::uint64_t size = 0;
    FileDescriptor image = openImage(path, m_hardwareVariant, size, error);
    if (!image) {
        return false;
    }
    if (m_thread.joinable()) {
        m_thread.join();
    }
    try {
        m_active = true;
        m_thread = std::thread([this, size, &progress, opened = std::move(image)] {
            run(opened, size, progress);
            m_active = false;
        });
        return true;
    } catch (const std::system_error& exception) {
        m_active = false;
        error = "cannot burn the image \"" + path + "\": " + exception.what();
        return false;
    }
}

void PlainImage::stop() {
    std::thread thread;
    {
        const std::lock_guard lock(m_mutex);
        m_stopping = true;
        thread.swap(m_thread);
    }
    if (thread.joinable()) {
        thread.join();
    }
}

void PlainImage::run(const FileDescriptor& image, std::uint64_t size,
                     AdminProgressCallback& progress) {
    int last = kDone;
    try {
        copy(image, size, progress);
    } catch (const std::exception& exception) {
        last = kFailed;
        logExc(kComponent, kFile, __LINE__, "the burn failed", exception);
    }
    progress.progressNotify(last);
}

void PlainImage::copy(const FileDescriptor& image, std::uint64_t size,
                      AdminProgressCallback& progress) {
    const FileDescriptor flash = m_device.openDirectory(m_flash, Missing::eMake);
    HiddenFile burnt(flash);
    std::vector<char> block(kBlock);
    std::uint64_t copied = 0;
    int reported = -1;
    while (const std::size_t count = readBlock(image, block)) {
        if (m_stopping) {
            throw StorageError("the phone is being stopped");
        }
        burnt.write(block.data(), count);
        copied += count;
        const int percent = copied < size ? static_cast<int>(copied * kDone / size) : kDone - 1;
        if (percent != reported) {
            reported = percent;
            progress.progressNotify(percent);
        }
    }
    if (copied != size) {
        throw StorageError("the image has changed meanwhile");
    }
    burnt.keep();
    ConfinedRoot::synchronize(flash, m_device.path());
}

}  // namespace vireo
