#include "files/FileValidator.h"

#include <optional>
#include <utility>

#include "Boundary.h"
#include "device/Storage.h"
#include "files/FileTypeCatalogue.h"
#include "services/MediaControlServiceIfc.h"
#include "services/MobilityServiceIfc.h"

namespace vireo {
namespace {

/// Empty when there is no such file, or it cannot be read.
std::optional<std::uint64_t> sizeOf(const std::string& fullPath) {
    return guarded("fileSize", std::optional<std::uint64_t>(),
                   [&] { return std::optional<std::uint64_t>(Storage::fileSize(fullPath)); });
}

bool isCheckedByName(LocalMgmtIfc::eFiletype type) {
    return type == LocalMgmtIfc::FILETYPE_PICTURE || type == LocalMgmtIfc::FILETYPE_MUSIC_ON_HOLD ||
           type == LocalMgmtIfc::FILETYPE_SCREENSAVER || type == LocalMgmtIfc::FILETYPE_RINGER;
}

}  // namespace

FileValidator::FileValidator(MediaSource media, MobilitySource mobility)
    : m_media(std::move(media)), m_mobility(std::move(mobility)) {}

bool FileValidator::isFileName(const std::string& name) {
    return !name.empty() && name != "." && name != ".." && name.find('/') == std::string::npos &&
           name.find('\0') == std::string::npos;
}

FileValidator::Verdict FileValidator::check(LocalMgmtIfc::eFiletype type,
                                            const std::string& fullPath) {
    const FileTypeRow& row = FileTypeCatalogue::row(type);
    if (row.check == FileCheck::eAccepted) {
        return Verdict::eAccepted;
    }
    if (row.check == FileCheck::eUnchecked) {
        VCMS_LOG(kLogWarning, "No validation for file type %d", static_cast<int>(type));
        return Verdict::eAccepted;
    }
    const std::optional<std::uint64_t> size = sizeOf(fullPath);
    if (!size) {
        return Verdict::eRejected;
    }
    if (*size > row.sizeLimit) {
        if (type == LocalMgmtIfc::FILETYPE_LDAP) {
            VCMS_LOG(kLogWarning, "File rejected - Maximum size exceeded");
        }
        remove(fullPath);
        return Verdict::eRejected;
    }
    return row.check == FileCheck::eSize || isPlayable(row, fullPath) ? Verdict::eAccepted
                                                                      : Verdict::eUnusable;
}

bool FileValidator::isPlayable(const FileTypeRow& row, const std::string& fullPath) {
    MediaControlServiceIfc* const media = m_media();
    if (media == nullptr) {
        // Without the check a file is better kept than lost.
        VCMS_LOG(kLogError, "Could not validate file %s, MediaControlServiceIfc not available",
                 fullPath.c_str());
        return true;
    }
    const auto kind = row.check == FileCheck::eMusicOnHold ? MediaControlServiceIfc::eMusicOnHold
                                                           : MediaControlServiceIfc::eRinger;
    return guarded("checkAudioFile", false,
                   [&] { return media->checkAudioFile(kind, fullPath) == 0; });
}

void FileValidator::remove(const std::string& fullPath) {
    const bool isDeleted = guarded("deleteFile", false, [&] {
        Storage::deleteFile(fullPath);
        return true;
    });
    if (isDeleted) {
        VCMS_LOG(kLogDebug, "Deleted invalid file %s", fullPath.c_str());
    } else {
        VCMS_LOG(kLogError, "Error occurred whilst deleting %s", fullPath.c_str());
    }
}

bool FileValidator::validateFile(LocalMgmtIfc::eUsertype user, LocalMgmtIfc::eFiletype type,
                                 const std::string& fileName) {
    if (!isFileName(fileName)) {
        VCMS_LOG(kLogError, "validateFile: \"%s\" is no file name", fileName.c_str());
        return false;
    }
    if (!isCheckedByName(type)) {
        VCMS_LOG(kLogWarning, "No validation for file type %d", static_cast<int>(type));
        return true;
    }
    if (type == LocalMgmtIfc::FILETYPE_PICTURE) {
        if (MobilityServiceIfc* const mobility = m_mobility()) {
            guardedCall("pictureDownloaded", [&] { mobility->pictureDownloaded(fileName); });
        }
        VCMS_LOG(kLogDebug, "VireoClientMgmt::validateFile( ) - Inform Mobility Svc of pic dnld");
    }
    std::string path;
    FileTypeCatalogue::appendDirectory(path, user, type);
    path += fileName;
    guardedCall("initStorageLocation", [&] { Storage::initStorageLocation(path, 0, false); });
    return validateFileWithPath(type, path);
}

}  // namespace vireo
