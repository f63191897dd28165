#pragma once

#include <map>
#include <string>

namespace vireo {

class LocalMgmtIfc;

/// What became of one file request.
struct fileData {
    int status = 0;  ///< 1 failed, 2 initiated
    std::string itemName;
    std::string failureText;
};

/// The file deployment manager behind the "file-..." request items. Requests are not carried out
/// yet: each is refused with a reason.
class FileManager {
public:
    explicit FileManager(LocalMgmtIfc& service);

    bool readFileManagerCache(const std::string& rootId, std::string& value);
    bool changeFileManagerCache(const std::string& rootId, const std::string& value,
                                std::string& reason);
    /// Fills `statuses` with what is to be reported, by request index.
    bool flushToCache(std::map<unsigned int, fileData>& statuses);
};

}  // namespace vireo
