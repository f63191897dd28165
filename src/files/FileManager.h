#pragma once

#include <string>

#include "items/OwnItems.h"

namespace vireo {

class LocalMgmtIfc;

/// The file deployment manager behind the "file-..." request items. Requests are not carried out
/// yet: each is refused with a reason.
class FileManager {
public:
    explicit FileManager(LocalMgmtIfc& service);

    bool readFileManagerCache(const std::string& rootId, std::string& value);
    bool changeFileManagerCache(const std::string& rootId, const std::string& value,
                                std::string& reason);
    /// Fills `statuses` with what is to be reported.
    bool flushToCache(FileRequestStatuses& statuses);
    /// A deployment took too long. None is ever under way.
    void fileDownloadTimeout();
};

}  // namespace vireo
