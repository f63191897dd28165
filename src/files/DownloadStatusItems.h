#pragma once

#include <string>

#include "LocalMgmtIfc.h"

namespace vireo {

/// Writes how and when the last download of a type ended.
class DownloadStatusItems {
public:
    static constexpr const char* kSucceeded = "1";
    static constexpr const char* kFailed = "2";

    /// Writes "dl-...-last-status" and "dl-...-last-time", the latter as UTC such as
    /// 2027-03-01T12:00:00Z. Types without download items have none.
    static void recordTimeAndStatus(LocalMgmtIfc& items, const std::string& status,
                                    LocalMgmtIfc::eFiletype type);
};

}  // namespace vireo
