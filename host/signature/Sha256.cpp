#include "signature/Sha256.h"

#include <openssl/evp.h>

#include <stdexcept>

namespace vireo {
namespace {

void require(int result) {
    if (result != 1) {
        throw std::runtime_error("SHA-256 cannot be computed");
    }
}

}  // namespace

void Sha256::Deleter::operator()(evp_md_ctx_st* context) const {
    EVP_MD_CTX_free(context);
}

Sha256::Sha256() : m_context(EVP_MD_CTX_new()) {
    require(m_context ? EVP_DigestInit_ex(m_context.get(), EVP_sha256(), nullptr) : 0);
}

void Sha256::add(std::span<const unsigned char> bytes) {
    require(EVP_DigestUpdate(m_context.get(), bytes.data(), bytes.size()));
}

Sha256Digest Sha256::finish() {
    Sha256Digest digest{};
    unsigned size = 0;
    require(EVP_DigestFinal_ex(m_context.get(), digest.data(), &size));
    return digest;
}

Sha256Digest Sha256::of(std::span<const unsigned char> bytes) {
    Sha256 sha;
    sha.add(bytes);
    return sha.finish();
}

}  // namespace vireo
