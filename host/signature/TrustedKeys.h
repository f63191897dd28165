#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "signature/SignatureKey.h"

namespace vireo {

/// The keys whose signatures on software images the phone believes: "*.pem" in one directory. There
/// can be several, so that one can be replaced.
class TrustedKeys {
public:
    static constexpr std::uintmax_t kLargestFile = 64U << 10U;

    TrustedKeys() = default;
    /// Reads them all. A file that cannot be used is left out, with a warning line that names it; a
    /// directory that is missing or cannot be read holds none. Files whose names begin with "." are
    /// passed over.
    explicit TrustedKeys(const std::filesystem::path& directory);

    void add(PublicKey key) { m_keys.push_back(std::move(key)); }
    bool isEmpty() const { return m_keys.empty(); }
    /// Null when it is none of them.
    const PublicKey* find(const SignatureKeyId& id) const;

private:
    std::vector<PublicKey> m_keys;
};

}  // namespace vireo
