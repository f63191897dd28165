#include "files/DownloadSettings.h"

#include <algorithm>

#include "DownloadTags.h"
#include "LogMacros.h"

namespace vireo {
namespace {

constexpr LocalMgmtIfc::eDownloadProtocol kNoProtocol{};

LocalMgmtIfc::eDownloadProtocol protocolOf(std::string method) {
    std::transform(method.begin(), method.end(), method.begin(), [](char each) {
        return each >= 'a' && each <= 'z' ? static_cast<char>(each - 'a' + 'A') : each;
    });
    if (method == "1" || method == "FTP") {
        return LocalMgmtIfc::DOWNLOAD_FTP;
    }
    return method == "2" || method == "HTTPS" ? LocalMgmtIfc::DOWNLOAD_HTTPS : kNoProtocol;
}

void useCommonTags(DownloadTags& tags) {
    tags.method = "dl-ftp-method";
    tags.address = "dl-ftp-addr";
    tags.port = "dl-ftp-port";
    tags.account = "dl-ftp-account";
    tags.userName = "dl-ftp-username";
    tags.password = "dl-ftp-password";
    tags.path = "dl-ftp-path";
    tags.baseUrl = "dl-ftp-base-url";
}

}  // namespace

bool DownloadSettings::loadDownloadData(LocalMgmtIfc& items, DownloadData& data,
                                        DownloadTags& tags) {
    if (items.getData(tags.useDefaults, data.useDefaults) && data.useDefaults == "true") {
        useCommonTags(tags);
    }
    // Deliberate: the account is never read.
    const bool result =
        items.getData(tags.method, data.method) && items.getData(tags.address, data.address) &&
        items.getData(tags.port, data.port) && items.getData(tags.userName, data.userName) &&
        items.getData(tags.password, data.password) && items.getData(tags.path, data.path) &&
        items.getData(tags.baseUrl, data.baseUrl) && items.getData(tags.file, data.file);
    VCMS_LOG(kLogDebug, "loadDownloadData. end. rc = %d", result ? 1 : 0);
    return result;
}

DownloadSource DownloadSettings::sourceOf(const DownloadData& data) {
    DownloadSource source{.protocol = protocolOf(data.method),
                          .port = data.port,
                          .server = data.address,
                          .userName = data.userName,
                          .password = data.password,
                          .sourcePath = data.path,
                          .fileName = data.file};
    if (source.protocol == LocalMgmtIfc::DOWNLOAD_HTTPS && !data.baseUrl.empty()) {
        source.server = data.baseUrl;
        source.port.clear();
        source.sourcePath.clear();
    }
    return source;
}

}  // namespace vireo
