#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "LocalMgmtIfc.h"

namespace vireo {

struct DownloadTags;

/// How a file that was received is looked at.
enum class FileCheck { eAccepted, eSize, eRinger, eMusicOnHold, eUnchecked };

/// What is laid down for a file type.
struct FileTypeRow {
    LocalMgmtIfc::eFiletype type;
    std::string_view xmlName;    ///< under which messages carry it; empty: under none
    std::string_view directory;  ///< below the user's; ends in "/", or empty: the storage root
    std::string_view infix;      ///< of its download items; empty: it has none
    int countLimit;  ///< files that a user may keep; 0 nothing laid down, -1 without end
    int nameLimit;   ///< characters of a file name; 0 nothing laid down
    FileCheck check;
    std::uint64_t sizeLimit;  ///< bytes; of the checks that look at the size
    bool hasDefaults;         ///< files that every user has from the beginning
    bool isSupported;
};

/// The file types of the phone. Safe from every thread.
class FileTypeCatalogue {
public:
    /// Unknown types answer with the row of `FILETYPE_INVALID`.
    static const FileTypeRow& row(LocalMgmtIfc::eFiletype type);
    /// Null when no type has that name. Names are compared exactly.
    static const FileTypeRow* findByXmlName(std::string_view xmlName);
    /// Whether one file of the type takes the place of the one before.
    static bool isSingleFileType(LocalMgmtIfc::eFiletype type);

    /// Appends the directory that the type's files of a user lie below, relative to the storage
    /// root; it may be that root itself.
    static void appendUserDirectory(std::string& path, LocalMgmtIfc::eUsertype user,
                                    LocalMgmtIfc::eFiletype type);
    /// Appends that directory and the type's own. False, with an error line, for an unsupported
    /// type; the first is appended then, too.
    static bool appendDirectory(std::string& path, LocalMgmtIfc::eUsertype user,
                                LocalMgmtIfc::eFiletype type);
    /// The items of the type's download settings. True with all of them empty for types that only
    /// the deployment manager fetches; false, with an error line, for an unsupported type.
    static bool getDownloadVcmsTags(LocalMgmtIfc::eFiletype type, DownloadTags& tags);
};

}  // namespace vireo
