#pragma once

#include <memory>
#include <span>

#include "image/ImageHeader.h"

// As the library declares it.
struct evp_md_ctx_st;

namespace vireo {

/// The SHA-256 of bytes that come piece by piece. Throws `std::runtime_error` when the library has
/// no memory.
class Sha256 {
public:
    Sha256();

    void add(std::span<const unsigned char> bytes);
    /// Of all that was added. The object is good for nothing but its end then.
    Sha256Digest finish();

    static Sha256Digest of(std::span<const unsigned char> bytes);

private:
    struct Deleter {
        void operator()(evp_md_ctx_st* context) const;
    };
    std::unique_ptr<evp_md_ctx_st, Deleter> m_context;
};

}  // namespace vireo
