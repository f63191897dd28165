#pragma once

#include <cstddef>
#include <string>

namespace vireo {

/// Salted, slow hashes of passwords, as text that says itself how it was made.
class PasswordHash {
public:
    static constexpr std::size_t kLongest = 511;

    /// Whether it can be a password at all: 1 to 511 bytes without NUL.
    static bool isPassword(const std::string& password);
    /// A hash with a salt of its own. Empty, with a one-line `error`, when the password is none or
    /// the system gives no random bytes or memory.
    static std::string make(const std::string& password, std::string& error);
    /// Takes as long as making the hash took.
    static bool matches(const std::string& password, const std::string& hash);
};

}  // namespace vireo
