#include "signature/SignatureKey.h"

#include <openssl/bio.h>
#include <openssl/evp.h>
#include <openssl/pem.h>

#include <algorithm>
#include <stdexcept>
#include <utility>

#include "signature/Sha256.h"

namespace vireo {
namespace {

using RawKey = std::array<unsigned char, 32>;

struct BioDeleter {
    void operator()(BIO* bio) const { BIO_free(bio); }
};
using BioPointer = std::unique_ptr<BIO, BioDeleter>;

struct ContextDeleter {
    void operator()(EVP_MD_CTX* context) const { EVP_MD_CTX_free(context); }
};
using ContextPointer = std::unique_ptr<EVP_MD_CTX, ContextDeleter>;

[[noreturn]] void fail(const char* what) {
    throw std::runtime_error(what);
}

BioPointer readerOf(const std::string& text) {
    return BioPointer(BIO_new_mem_buf(text.data(), static_cast<int>(text.size())));
}

std::string contentOf(const BioPointer& bio) {
    char* bytes = nullptr;
    const long size = BIO_get_mem_data(bio.get(), &bytes);
    return {bytes, static_cast<std::size_t>(size)};
}

/// No passphrase is asked for: there is nobody to answer.
int refusePassphrase(char* /*buffer*/, int /*size*/, int /*writing*/, void* /*user*/) {
    return -1;
}

bool isEd25519(const SignatureKeyPointer& key) {
    return key && EVP_PKEY_get_base_id(key.get()) == EVP_PKEY_ED25519;
}

RawKey rawPublicKey(const SignatureKeyPointer& key) {
    RawKey raw{};
    std::size_t size = raw.size();
    if (EVP_PKEY_get_raw_public_key(key.get(), raw.data(), &size) != 1) {
        fail("a key has no public part");
    }
    return raw;
}

}  // namespace

void SignatureKeyDeleter::operator()(evp_pkey_st* key) const {
    EVP_PKEY_free(key);
}

PublicKey::PublicKey(SignatureKeyPointer key) : m_key(std::move(key)) {
    const Sha256Digest digest = Sha256::of(rawPublicKey(m_key));
    std::copy_n(digest.begin(), m_id.size(), m_id.begin());
}

std::optional<PublicKey> PublicKey::fromPem(const std::string& text, std::string& error) {
    const BioPointer reader = readerOf(text);
    SignatureKeyPointer key(PEM_read_bio_PUBKEY(reader.get(), nullptr, refusePassphrase, nullptr));
    if (!isEd25519(key)) {
        error = key ? "it is a public key, but not one for Ed25519"
                    : "it holds no public key in PEM form";
        return std::nullopt;
    }
    return PublicKey(std::move(key));
}

bool PublicKey::verifies(std::span<const unsigned char> message,
                         const Ed25519Signature& signature) const {
    const ContextPointer context(EVP_MD_CTX_new());
    return context &&
           EVP_DigestVerifyInit(context.get(), nullptr, nullptr, nullptr, m_key.get()) == 1 &&
           EVP_DigestVerify(context.get(), signature.data(), signature.size(), message.data(),
                            message.size()) == 1;
}

std::string PublicKey::pem() const {
    const BioPointer writer(BIO_new(BIO_s_mem()));
    if (!writer || PEM_write_bio_PUBKEY(writer.get(), m_key.get()) != 1) {
        fail("the public key cannot be written");
    }
    return contentOf(writer);
}

PrivateKey PrivateKey::generate() {
    SignatureKeyPointer key(EVP_PKEY_Q_keygen(nullptr, nullptr, "ED25519"));
    if (!key) {
        fail("a key cannot be made");
    }
    return PrivateKey(std::move(key));
}

PrivateKey PrivateKey::fromSeed(const Seed& seed) {
    SignatureKeyPointer key(
        EVP_PKEY_new_raw_private_key(EVP_PKEY_ED25519, nullptr, seed.data(), seed.size()));
    if (!key) {
        fail("a key cannot be made");
    }
    return PrivateKey(std::move(key));
}

std::optional<PrivateKey> PrivateKey::fromPem(const std::string& text, std::string& error) {
    const BioPointer reader = readerOf(text);
    SignatureKeyPointer key(
        PEM_read_bio_PrivateKey(reader.get(), nullptr, refusePassphrase, nullptr));
    if (!isEd25519(key)) {
        error = key ? "it is a private key, but not one for Ed25519"
                    : "it holds no private key in PEM form without a passphrase";
        return std::nullopt;
    }
    return PrivateKey(std::move(key));
}

Ed25519Signature PrivateKey::sign(std::span<const unsigned char> message) const {
    const ContextPointer context(EVP_MD_CTX_new());
    Ed25519Signature signature{};
    std::size_t size = signature.size();
    if (!context ||
        EVP_DigestSignInit(context.get(), nullptr, nullptr, nullptr, m_key.get()) != 1 ||
        EVP_DigestSign(context.get(), signature.data(), &size, message.data(), message.size()) !=
            1) {
        fail("the signature cannot be made");
    }
    return signature;
}

PublicKey PrivateKey::publicKey() const {
    const RawKey raw = rawPublicKey(m_key);
    return PublicKey(SignatureKeyPointer(
        EVP_PKEY_new_raw_public_key(EVP_PKEY_ED25519, nullptr, raw.data(), raw.size())));
}

std::string PrivateKey::pem() const {
    const BioPointer writer(BIO_new(BIO_s_mem()));
    if (!writer || PEM_write_bio_PKCS8PrivateKey(writer.get(), m_key.get(), nullptr, nullptr, 0,
                                                 nullptr, nullptr) != 1) {
        fail("the private key cannot be written");
    }
    return contentOf(writer);
}

void PrivateKey::sign(ImageHeader& header) const {
    header.keyId = publicKey().id();
    const ImageHeader::Bytes bytes = header.encode();
    header.signature = sign(std::span(bytes).first(ImageHeader::kSignedSize));
}

std::string textOf(std::span<const unsigned char> bytes) {
    constexpr const char* kDigits = "0123456789abcdef";
    std::string text;
    text.reserve(2 * bytes.size());
    for (const unsigned char each : bytes) {
        text += kDigits[each >> 4U];
        text += kDigits[each & 0x0fU];
    }
    return text;
}

}  // namespace vireo
