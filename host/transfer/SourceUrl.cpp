#include "transfer/SourceUrl.h"

#include <curl/curl.h>

#include <algorithm>
#include <charconv>
#include <memory>
#include <string_view>

namespace vireo {
namespace {

struct CurlFree {
    void operator()(char* text) const { curl_free(text); }
    void operator()(CURLU* address) const { curl_url_cleanup(address); }
};
using CurlText = std::unique_ptr<char, CurlFree>;
using CurlAddress = std::unique_ptr<CURLU, CurlFree>;

const char* schemeOf(TransportType transport) {
    return transport == TransportType::eFtp ? "ftp" : "https";
}

bool hasControlCharacter(const std::string& text) {
    return std::any_of(text.begin(), text.end(), [](char c) {
        const auto code = static_cast<unsigned char>(c);
        return code < 0x20 || code == 0x7f;
    });
}

/// For an error line: what may be a password before "@" is not shown.
std::string shown(const std::string& server) {
    const std::size_t at = server.rfind('@');
    return "'" + (at == std::string::npos ? server : "***" + server.substr(at)) + "'";
}

bool isPort(const std::string& text) {
    unsigned number = 0;
    const char* const end = text.data() + text.size();
    const auto [next, failure] = std::from_chars(text.data(), end, number);
    return failure == std::errc() && next == end && number >= 1 && number <= 65535;
}

std::string part(CURLU* address, CURLUPart which, unsigned flags = 0) {
    char* text = nullptr;
    if (curl_url_get(address, which, &text, flags) != CURLUE_OK) {
        return {};
    }
    const CurlText owner(text);
    return text;
}

/// A base address, complete with its scheme.
bool parseBase(CURLU* address, const TransferRequest& request, std::string& error) {
    const CURLUcode code = curl_url_set(address, CURLUPART_URL, request.server.c_str(),
                                        CURLU_DISALLOW_USER | CURLU_PATH_AS_IS | CURLU_URLENCODE);
    if (code == CURLUE_USER_NOT_ALLOWED) {
        error = "the address of the server holds a user name; it has a setting of its own";
    } else if (code != CURLUE_OK) {
        error = shown(request.server) + " is no address of a server: " + curl_url_strerror(code);
    } else if (part(address, CURLUPART_SCHEME) != schemeOf(request.transport)) {
        error =
            shown(request.server) + " does not begin with " + schemeOf(request.transport) + "://";
    } else if (!part(address, CURLUPART_QUERY).empty() ||
               !part(address, CURLUPART_FRAGMENT).empty()) {
        error = shown(request.server) + " has more than a path";
    } else {
        return true;
    }
    return false;
}

/// A host name or address by itself.
bool parseHost(CURLU* address, const TransferRequest& request, std::string& error) {
    // An address with colons stands in brackets in a URL.
    const bool isBare = std::count(request.server.begin(), request.server.end(), ':') > 1 &&
                        request.server.front() != '[';
    const std::string host = isBare ? "[" + request.server + "]" : request.server;
    const CURLUcode code = curl_url_set(address, CURLUPART_HOST, host.c_str(), 0);
    if (code != CURLUE_OK) {
        error = shown(request.server) + " is no name of a server: " + curl_url_strerror(code);
        return false;
    }
    if (!request.port.empty() && !isPort(request.port)) {
        error = "the port '" + request.port + "' is no number from 1 to 65535";
        return false;
    }
    curl_url_set(address, CURLUPART_SCHEME, schemeOf(request.transport), 0);
    if (!request.port.empty()) {
        curl_url_set(address, CURLUPART_PORT, request.port.c_str(), 0);
    }
    return true;
}

std::string encoded(std::string_view path) {
    std::string result;
    while (true) {
        const std::size_t length = std::min(path.find('/'), path.size());
        if (length > 0) {  // a length of 0 would mean the whole text
            const CurlText segment(
                curl_easy_escape(nullptr, path.data(), static_cast<int>(length)));
            result += segment ? segment.get() : "";
        }
        if (length == path.size()) {
            return result;
        }
        result += '/';
        path.remove_prefix(length + 1);
    }
}

std::string joined(const std::string& directory, const std::string& name) {
    if (directory.empty()) {
        return name;
    }
    const std::size_t start = std::min(name.find_first_not_of('/'), name.size());
    return directory + (directory.back() == '/' ? "" : "/") + name.substr(start);
}

bool checkTexts(const TransferRequest& request, std::string& error) {
    const struct {
        const char* what;
        const std::string& text;
    } texts[] = {{"name of the server", request.server},
                 {"user name", request.userName},
                 {"password", request.password},
                 {"path on the server", request.sourcePath},
                 {"file name", request.fileName}};
    for (const auto& [what, text] : texts) {
        if (hasControlCharacter(text)) {
            error = std::string("the ") + what + " has a control character in it";
            return false;
        }
    }
    if (request.server.empty()) {
        error = "there is no name of a server";
        return false;
    }
    const std::string base = request.fileName.substr(request.fileName.rfind('/') + 1);
    if (base.empty() || base == "." || base == "..") {
        error = "'" + request.fileName + "' names no file";
        return false;
    }
    return true;
}

}  // namespace

std::optional<SourceUrl> SourceUrl::compose(const TransferRequest& request, std::string& error) {
    if (!checkTexts(request, error)) {
        return std::nullopt;
    }
    const CurlAddress address(curl_url());
    const bool isBase = request.server.find("://") != std::string::npos;
    if (!(isBase ? parseBase(address.get(), request, error)
                 : parseHost(address.get(), request, error))) {
        return std::nullopt;
    }
    const std::string host = part(address.get(), CURLUPART_HOST);
    const std::string port = part(address.get(), CURLUPART_PORT, CURLU_DEFAULT_PORT);
    std::string base = isBase ? part(address.get(), CURLUPART_PATH) : "";
    while (base.ends_with('/')) {
        base.pop_back();
    }
    SourceUrl source;
    source.file = joined(request.sourcePath, request.fileName);
    const std::string relative = source.file.substr(source.file.find_first_not_of('/'));
    // In an FTP URL the first "/" only ends the host; a path from the root has its own, encoded.
    const bool isFromRoot = request.transport == TransportType::eFtp && base.empty() &&
                            relative.size() < source.file.size();
    const std::string origin = host + ":" + port;
    const std::string scheme = schemeOf(request.transport);
    source.url = scheme + "://" + origin + base + (isFromRoot ? "/%2F" : "/") + encoded(relative);
    source.server = scheme + " server '" + origin + "'";
    if (!base.empty()) {
        source.file = base + "/" + relative;
    }
    return source;
}

}  // namespace vireo
