#pragma once

#include <string_view>

#include "LocalMgmtIfc.h"

namespace vireo {

/// What is laid down for a file type.
struct FileTypeRow {
    LocalMgmtIfc::eFiletype type;
    std::string_view xmlName;  ///< under which messages carry it; empty: under none
    int countLimit;            ///< files that a user may keep; 0 nothing laid down, -1 without end
    int nameLimit;             ///< characters of a file name; 0 nothing laid down
};

/// The file types of the phone. Safe from every thread.
class FileTypeCatalogue {
public:
    /// Unknown types answer with the row of `FILETYPE_INVALID`.
    static const FileTypeRow& row(LocalMgmtIfc::eFiletype type);
    /// Null when no type has that name. Names are compared exactly.
    static const FileTypeRow* findByXmlName(std::string_view xmlName);
};

}  // namespace vireo
