#include "files/FileStorage.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <memory>
#include <mutex>
#include <optional>
#include <string_view>

#include "files/FileContents.h"
#include "files/FilePlace.h"
#include "files/PartialName.h"

namespace vireo {
namespace {

using Missing = ConfinedRoot::Missing;

constexpr const char* kDisplayName = "Phone storage";
constexpr const char* kMove = "move";

/// A name that is not shown, for what is not complete. What still bears it in the end is removed.
class HiddenName {
public:
    explicit HiddenName(const FilePlace& place) : m_place(place) {}
    HiddenName(const HiddenName&) = delete;
    HiddenName& operator=(const HiddenName&) = delete;
    ~HiddenName() {
        if (!m_name.empty()) {
            ::unlinkat(m_place.directory.get(), m_name.c_str(), 0);
        }
    }
    const char* text() const { return m_name.c_str(); }
    /// What bears it takes its place, on stable storage.
    void become(const char* what, const std::string& path) {
        const int directory = m_place.directory.get();
        if (::renameat(directory, text(), directory, m_place.name.c_str()) != 0) {
            failOn(what, path);
        }
        m_name.clear();
        ConfinedRoot::synchronize(m_place.directory, path);
    }

private:
    const FilePlace& m_place;
    std::string m_name = newPartialName();
};

/// Whether a link of that name has that target.
bool isLinkTo(const FilePlace& place, const std::string& target) {
    std::string present(target.size() + 1, '\0');
    const ssize_t length =
        ::readlinkat(place.directory.get(), place.name.c_str(), present.data(), present.size());
    return length == static_cast<ssize_t>(target.size()) && present.starts_with(target);
}

bool isFile(const FilePlace& place) {
    struct stat status {};
    return place.status(status, AT_SYMLINK_NOFOLLOW) && S_ISREG(status.st_mode);
}

/// For what is meant for links alone.
void refuseFile(const FilePlace& place, const char* what, const std::string& path) {
    if (isFile(place)) {
        failOn(what, path, "it is a file and no link");
    }
}

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
    return FileContents(m_device, "take the size of", m_device.placeOf(fullPath)).size();
}

int FileStorage::compareFiles(const std::string& onePath, const std::string& otherPath) {
    constexpr const char* kWhat = "compare";
    std::optional<FileContents> one;
    std::optional<FileContents> other;
    try {
        one.emplace(m_device, kWhat, m_device.placeOf(onePath));
        other.emplace(m_device, kWhat, m_device.placeOf(otherPath));
    } catch (const StorageError&) {
        return 1;
    }
    return one->equals(*other) ? 0 : 1;
}

void FileStorage::deleteFile(const std::string& fullPath) {
    constexpr const char* kWhat = "delete";
    const FilePlace place(m_device, kWhat, m_device.placeOf(fullPath), Missing::eRefuse);
    if (::unlinkat(place.directory.get(), place.name.c_str(), 0) != 0) {
        failOn(kWhat, fullPath);
    }
    ConfinedRoot::synchronize(place.directory, fullPath);
}

std::vector<StorageEntry> FileStorage::list(const std::string& directory) {
    constexpr const char* kWhat = "list";
    FileDescriptor opened = m_device.openDirectory(
        m_device.locate(m_device.placeOf(directory) + '/').names, Missing::eRefuse);
    const int descriptor = opened.get();
    const DirectoryStream stream(::fdopendir(descriptor));
    if (!stream) {
        failOn(kWhat, directory);
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
        failOn(kWhat, directory);
    }
    std::sort(entries.begin(), entries.end(),
              [](const StorageEntry& a, const StorageEntry& b) { return a.name < b.name; });
    return entries;
}

void FileStorage::renameFile(const std::string& fromPath, const std::string& toPath) {
    const FilePlace from(m_device, kMove, m_device.placeOf(fromPath), Missing::eRefuse);
    move(from, fromPath, toPath);
}

void FileStorage::renameSymlink(const std::string& fromPath, const std::string& toPath) {
    const FilePlace from(m_device, kMove, m_device.placeOf(fromPath), Missing::eRefuse);
    const std::lock_guard lock(namesLock());
    refuseFile(from, kMove, fromPath);
    move(from, fromPath, toPath);
}

void FileStorage::move(const FilePlace& from, const std::string& fromPath,
                       const std::string& toPath) const {
    struct stat status {};
    if (!from.status(status, AT_SYMLINK_NOFOLLOW)) {
        failOn(kMove, fromPath);
    }
    if (S_ISDIR(status.st_mode)) {
        failOn(kMove, fromPath, "it is a directory");
    }
    const FilePlace to(m_device, kMove, m_device.placeOf(toPath), Missing::eMake);
    if (::renameat(from.directory.get(), from.name.c_str(), to.directory.get(), to.name.c_str()) !=
        0) {
        failOn(kMove, fromPath + "\" to \"" + toPath);
    }
    // The new name first: a file with both names is better than one with none.
    ConfinedRoot::synchronize(to.directory, toPath);
    ConfinedRoot::synchronize(from.directory, fromPath);
}

void FileStorage::createSymlink(const std::string& targetPath, const std::string& linkPath) {
    constexpr const char* kWhat = "link";
    const FilePlace place(m_device, kWhat, m_device.placeOf(linkPath), Missing::eRefuse);
    const std::string target = m_device.placeOf(targetPath);
    if (::symlinkat(target.c_str(), place.directory.get(), place.name.c_str()) != 0) {
        const int reason = errno;
        if (reason != EEXIST || !isLinkTo(place, target)) {
            errno = reason;
            failOn(kWhat, linkPath);
        }
    }
    ConfinedRoot::synchronize(place.directory, linkPath);
}

void FileStorage::replaceBySymlink(const std::string& targetPath, const std::string& linkPath) {
    constexpr const char* kWhat = "link";
    constexpr const char* kOther = "there is a file of that name with other contents";
    const FilePlace place(m_device, kWhat, m_device.placeOf(linkPath), Missing::eRefuse);
    const std::string target = m_device.placeOf(targetPath);
    std::optional<FileContents> same;
    if (isFile(place)) {
        same.emplace(m_device, kWhat, m_device.placeOf(linkPath));
        if (!same->equals(FileContents(m_device, kWhat, target))) {
            failOn(kWhat, linkPath, kOther);
        }
    }
    HiddenName hidden(place);
    if (::symlinkat(target.c_str(), place.directory.get(), hidden.text()) != 0) {
        failOn(kWhat, linkPath);
    }
    const std::lock_guard lock(namesLock());
    struct stat present {};
    if (place.status(present, AT_SYMLINK_NOFOLLOW) && S_ISREG(present.st_mode) &&
        !(same && same->isFile(present))) {
        failOn(kWhat, linkPath, kOther);
    }
    hidden.become(kWhat, linkPath);
}

void FileStorage::deleteSymlink(const std::string& linkPath) {
    constexpr const char* kWhat = "delete";
    const FilePlace place(m_device, kWhat, m_device.placeOf(linkPath), Missing::eRefuse);
    const std::lock_guard lock(namesLock());
    refuseFile(place, kWhat, linkPath);
    if (::unlinkat(place.directory.get(), place.name.c_str(), 0) != 0) {
        failOn(kWhat, linkPath);
    }
    ConfinedRoot::synchronize(place.directory, linkPath);
}

void FileStorage::copyFile(const std::string& fromPath, const std::string& toPath) {
    constexpr const char* kWhat = "copy";
    const FileContents source(m_device, kWhat, m_device.placeOf(fromPath));
    const FilePlace from(m_device, kWhat, m_device.placeOf(fromPath), Missing::eRefuse);
    const FilePlace to(m_device, kWhat, m_device.placeOf(toPath), Missing::eRefuse);
    struct stat present {};
    if (from.isSameAs(to) || (to.status(present, AT_SYMLINK_NOFOLLOW) && source.isFile(present))) {
        return;
    }
    HiddenName hidden(to);
    const FileDescriptor copy(
        ::openat(to.directory.get(), hidden.text(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666));
    if (!copy) {
        failOn(kWhat, toPath);
    }
    source.copyTo(copy, toPath);
    if (::fsync(copy.get()) != 0) {
        failOn(kWhat, toPath);
    }
    hidden.become(kWhat, toPath);
}

void FileStorage::getStorageName(std::string& id, std::string& displayName) {
    // As the phone sees it: it stays when the root of an emulated phone lies elsewhere.
    id = "/" + m_storage.path().substr(m_device.path().size());
    displayName = kDisplayName;
}

StorageSpace FileStorage::space() {
    const FileDescriptor directory =
        m_device.openDirectory(m_device.locate(m_storage.path()).names, Missing::eMake);
    struct statvfs status {};
    if (::fstatvfs(directory.get(), &status) != 0) {
        failOn("find out the room in", m_storage.path());
    }
    const std::uint64_t unit = status.f_frsize;
    return {status.f_blocks * unit, status.f_bavail * unit};
}

}  // namespace vireo
