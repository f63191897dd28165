#include "signature/TrustedKeys.h"

#include <algorithm>
#include <optional>
#include <system_error>

#include "files/SmallFile.h"
#include "log/Log.h"

namespace vireo {
namespace {

void warn(const std::string& text, int line) {
    if (loggingOnUni(kLogWarning)) {
        logAppUni("TrustedKeys", "./host/signature/TrustedKeys", kLogWarning, line, "%s",
                  text.c_str());
    }
}

std::optional<PublicKey> readKey(const std::filesystem::path& path) {
    std::string pem;
    std::string error;
    if (!SmallFile::read(path.string(), TrustedKeys::kLargestFile, pem, error)) {
        warn(error + "; it is no trusted key", __LINE__);
        return std::nullopt;
    }
    std::optional<PublicKey> key = PublicKey::fromPem(pem, error);
    if (!key) {
        warn("cannot use the trusted key " + path.string() + ": " + error, __LINE__);
    }
    return key;
}

}  // namespace

TrustedKeys::TrustedKeys(const std::filesystem::path& directory) {
    std::vector<std::filesystem::path> files;
    std::error_code failure;
    for (std::filesystem::directory_iterator each(directory, failure), end; !failure && each != end;
         each.increment(failure)) {
        if (each->path().extension() == ".pem" &&
            !each->path().filename().string().starts_with('.')) {
            files.push_back(each->path());
        }
    }
    if (failure && failure != std::errc::no_such_file_or_directory) {
        warn("cannot read " + directory.string() + ": " + failure.message(), __LINE__);
    }
    std::sort(files.begin(), files.end());
    for (const std::filesystem::path& file : files) {
        if (std::optional<PublicKey> key = readKey(file)) {
            m_keys.push_back(std::move(*key));
        }
    }
}

const PublicKey* TrustedKeys::find(const SignatureKeyId& id) const {
    const auto found = std::find_if(m_keys.begin(), m_keys.end(),
                                    [&](const PublicKey& key) { return key.id() == id; });
    return found != m_keys.end() ? &*found : nullptr;
}

}  // namespace vireo
