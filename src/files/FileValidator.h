#pragma once

#include <functional>
#include <string>

#include "LocalMgmtIfc.h"

namespace vireo {

class MediaControlServiceIfc;
class MobilityServiceIfc;
struct FileTypeRow;

/// Checks files that were received. What is too large is deleted. Safe from every thread.
class FileValidator {
public:
    // Each answers null while there is no such service.
    using MediaSource = std::function<MediaControlServiceIfc*()>;
    using MobilitySource = std::function<MobilityServiceIfc*()>;

    FileValidator(MediaSource media, MobilitySource mobility);

    enum class Verdict {
        eAccepted,
        eRejected,  ///< it was not there, or has been deleted
        eUnusable,  ///< sound that cannot be played; for the caller to remove
    };

    /// Checks the file at `fullPath`. A missing file is rejected by every type that has a check.
    Verdict check(LocalMgmtIfc::eFiletype type, const std::string& fullPath);
    /// The same: whether it was accepted.
    bool validateFileWithPath(LocalMgmtIfc::eFiletype type, const std::string& fullPath) {
        return check(type, fullPath) == Verdict::eAccepted;
    }
    /// Checks a file of a user by its name without directory. Types that cannot be checked so are
    /// accepted.
    bool validateFile(LocalMgmtIfc::eUsertype user, LocalMgmtIfc::eFiletype type,
                      const std::string& fileName);

    /// Whether a text can be the name of a file: not empty, "." or "..", and without "/" and NUL.
    static bool isFileName(const std::string& name);

private:
    bool isPlayable(const FileTypeRow& row, const std::string& fullPath);
    static void remove(const std::string& fullPath);

    MediaSource m_media;
    MobilitySource m_mobility;
};

}  // namespace vireo
