#pragma once

#include <optional>
#include <string>

#include "device/TransferRequest.h"

namespace vireo {

/// Where a file comes from, as the transfer library takes it and as people read it. No credentials.
struct SourceUrl {
    std::string url;
    std::string server;  ///< "ftp server 'host:21'"
    std::string file;    ///< path on the server, not encoded unless a base address has it so

    /// "'pub/a.wav' from ftp server 'host:21'"
    std::string name() const { return "'" + file + "' from " + server; }

    /// The path is `sourcePath` and `fileName` with one "/" between them. An FTP path is relative
    /// to the login directory, unless it starts with "/".
    ///
    /// `server` is a host name or an address, and then `port`, or the usual one, counts. Or it is a
    /// base address "https://host[:port][/path]", encoded as in any URL: then `port` is ignored,
    /// and the path follows the one of the base address. Empty with a one-line `error` that names
    /// what is wrong; it never shows credentials.
    static std::optional<SourceUrl> compose(const TransferRequest& request, std::string& error);
};

}  // namespace vireo
