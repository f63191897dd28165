#pragma once

#include <string>

namespace vireo {

/// The items that hold the download settings of one file type.
struct DownloadTags {
    std::string useDefaults;
    std::string method;
    std::string address;
    std::string port;
    std::string account;
    std::string userName;
    std::string password;
    std::string path;
    std::string baseUrl;
    std::string file;
};

}  // namespace vireo
