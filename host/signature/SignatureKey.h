#pragma once

#include <array>
#include <memory>
#include <optional>
#include <span>
#include <string>

#include "image/ImageHeader.h"

// As the library declares it.
struct evp_pkey_st;

namespace vireo {

struct SignatureKeyDeleter {
    void operator()(evp_pkey_st* key) const;
};
using SignatureKeyPointer = std::unique_ptr<evp_pkey_st, SignatureKeyDeleter>;

/// An Ed25519 key that checks signatures.
class PublicKey {
public:
    explicit PublicKey(SignatureKeyPointer key);

    /// From the PEM form ("BEGIN PUBLIC KEY"). Nothing, with a one-line `error`, when it is no such
    /// key.
    static std::optional<PublicKey> fromPem(const std::string& text, std::string& error);

    /// The first bytes of the SHA-256 of the key: which one it is, in images and in print.
    const SignatureKeyId& id() const { return m_id; }
    bool verifies(std::span<const unsigned char> message, const Ed25519Signature& signature) const;
    std::string pem() const;

private:
    SignatureKeyPointer m_key;
    SignatureKeyId m_id{};
};

/// An Ed25519 key that signs.
class PrivateKey {
public:
    using Seed = std::array<unsigned char, 32>;

    /// A new one. Throws `std::runtime_error` when the machine has no random numbers.
    static PrivateKey generate();
    /// The one that belongs to the seed.
    static PrivateKey fromSeed(const Seed& seed);
    /// From the PEM form ("BEGIN PRIVATE KEY") without a passphrase. Nothing, with a one-line
    /// `error`, when it is no such key.
    static std::optional<PrivateKey> fromPem(const std::string& text, std::string& error);

    Ed25519Signature sign(std::span<const unsigned char> message) const;
    PublicKey publicKey() const;
    std::string pem() const;

    /// Puts the id of this key and its signature into the header.
    void sign(ImageHeader& header) const;

private:
    explicit PrivateKey(SignatureKeyPointer key) : m_key(std::move(key)) {}

    SignatureKeyPointer m_key;
};

/// In hexadecimal digits.
std::string textOf(std::span<const unsigned char> bytes);

}  // namespace vireo
