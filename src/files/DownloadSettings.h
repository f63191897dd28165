#pragma once

#include <string>

#include "LocalMgmtIfc.h"

namespace vireo {

struct DownloadTags;

/// The values of a type's download items, as an administrator has set them.
struct DownloadData {
    std::string useDefaults;
    std::string method;
    std::string port;
    std::string address;
    std::string userName;
    std::string password;
    std::string path;
    std::string file;
    std::string baseUrl;
};

/// Where a file comes from. A struct, so that no two of all these texts can change places unseen.
struct DownloadSource {
    LocalMgmtIfc::eDownloadProtocol protocol = LocalMgmtIfc::DOWNLOAD_FTP;
    std::string port;
    std::string server;
    std::string userName;
    std::string password;
    std::string sourcePath;
    std::string fileName;
};

/// Reads download settings out of items.
class DownloadSettings {
public:
    /// Reads the settings of the tags; with the type's defaults in use, the common ones in their
    /// place, all but the file. False at the first item that cannot be read.
    static bool loadDownloadData(LocalMgmtIfc& items, DownloadData& data, DownloadTags& tags);
    /// What the settings mean. The protocol of an unknown method is none.
    static DownloadSource sourceOf(const DownloadData& data);
};

}  // namespace vireo
