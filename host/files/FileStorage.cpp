#include "files/FileStorage.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <memory>
#include <system_error>

namespace vireo {
namespace {

using Missing = ConfinedRoot::Missing;

[[noreturn]] void fail(const char* what, const std::string& path, const std::string& reason) {
    throw StorageError(std::string("cannot ") + what + " \"" + path + "\": " + reason);
}

[[noreturn]] void fail(const char* what, const std::string& path) {
    fail(what, path, std::generic_category().message(errno));
}

/// A file by its directory, which is open, and its name there.
struct Place {
    Place(const ConfinedRoot& root, const char* what, const std::string& path, Missing missing) {
        PathNames parts = root.locate(path);
        if (parts.isDirectory) {
            fail(what, path, "it is the name of a directory");
        }
        directory = root.openDirectory(parts.directories(), missing);
        name = std::move(parts.names.back());
    }

    /// False, with errno, when there is nothing.
    bool status(struct stat& status, int flags) const {
        return ::fstatat(directory.get(), name.c_str(), &status, flags) == 0;
    }

    FileDescriptor directory;
    std::string name;
};

StorageEntry::eKind kindOf(int directory, const dirent& entry) {
    unsigned type = entry.d_type;
    struct stat status {};
    if (type == DT_UNKNOWN &&
        ::fstatat(directory, entry.d_name, &status, AT_SYMLINK_NOFOLLOW) == 0) {
        type = IFTODT(status.st_mode);
    }
    switch (type) {
        case DT_REG:
            return StorageEntry::eFile;
        case DT_LNK:
            return StorageEntry::eLink;
        case DT_DIR:
            return StorageEntry::eDirectory;
        default:
            return StorageEntry::eOther;
    }
}

struct DirectoryCloser {
    void operator()(DIR* stream) const { ::closedir(stream); }
};
using DirectoryStream = std::unique_ptr<DIR, DirectoryCloser>;

}  // namespace

FileStorage::FileStorage(const std::filesystem::path& deviceRoot, const std::string& storageRoot)
    : m_device(deviceRoot), m_storage(std::filesystem::path(m_device.path()) / storageRoot) {}

void FileStorage::initStorageLocation(std::string& path) {
    const std::string whole = path.starts_with('/') ? path : m_storage.path() + path;
    const PathNames parts = m_storage.locate(whole);
    std::string absolute = m_storage.path();
    for (const std::string& name : parts.directories()) {
        absolute += name + '/';
    }
    m_device.openDirectory(m_device.locate(absolute).names, Missing::eMake);
    path = parts.isDirectory ? absolute : absolute + parts.names.back();
}

std::uint64_t FileStorage::fileSize(const std::string& fullPath) {
    constexpr const char* kWhat = "take the size of";
    const Place place(m_device, kWhat, fullPath, Missing::eRefuse);
    struct stat status {};
    if (!place.status(status, 0)) {
        fail(kWhat, fullPath);
    }
    if (!S_ISREG(status.st_mode)) {
        fail(kWhat, fullPath, "it is no file");
    }
    return static_cast<std::uint64_t>(status.st_size);
}

void FileStorage::deleteFile(const std::string& fullPath) {
    constexpr const char* kWhat = "delete";
    const Place place(m_device, kWhat, fullPath, Missing::eRefuse);
    if (::unlinkat(place.directory.get(), place.name.c_str(), 0) != 0) {
        fail(kWhat, fullPath);
    }
    ConfinedRoot::synchronize(place.directory, fullPath);
}

std::vector<StorageEntry> FileStorage::list(const std::string& directory) {
    constexpr const char* kWhat = "list";
    FileDescriptor opened =
        m_device.openDirectory(m_device.locate(directory + '/').names, Missing::eRefuse);
    const int descriptor = opened.get();
    const DirectoryStream stream(::fdopendir(descriptor));
    if (!stream) {
        fail(kWhat, directory);
    }
    opened.release();
    std::vector<StorageEntry> entries;
    errno = 0;
    while (const dirent* const entry = ::readdir(stream.get())) {
        if (entry->d_name[0] != '.') {
            entries.push_back({entry->d_name, kindOf(descriptor, *entry)});
        }
        errno = 0;
    }
    if (errno != 0) {
        fail(kWhat, directory);
    }
    std::sort(entries.begin(), entries.end(),
              [](const StorageEntry& a, const StorageEntry& b) { return a.name < b.name; });
    return entries;
}

void FileStorage::move(const std::string& fromPath, const std::string& toPath) {
    constexpr const char* kWhat = "move";
    const Place from(m_device, kWhat, fromPath, Missing::eRefuse);
    struct stat status {};
    if (!from.status(status, AT_SYMLINK_NOFOLLOW)) {
        fail(kWhat, fromPath);
    }
    if (S_ISDIR(status.st_mode)) {
        fail(kWhat, fromPath, "it is a directory");
    }
    const Place to(m_device, kWhat, toPath, Missing::eMake);
    if (::renameat(from.directory.get(), from.name.c_str(), to.directory.get(), to.name.c_str()) !=
        0) {
        fail(kWhat, fromPath + "\" to \"" + toPath);
    }
    // The new name first: a file with both names is better than one with none.
    ConfinedRoot::synchronize(to.directory, toPath);
    ConfinedRoot::synchronize(from.directory, fromPath);
}

}  // namespace vireo
