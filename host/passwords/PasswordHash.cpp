#include "passwords/PasswordHash.h"

#include <crypt.h>

#include <cerrno>
#include <cstring>
#include <memory>
#include <system_error>

namespace vireo {
namespace {

constexpr const char* kMethod = "$y$";  // yescrypt

static_assert(PasswordHash::kLongest < CRYPT_MAX_PASSPHRASE_SIZE);

/// Working memory of the library, in which a password may be left.
struct Wiping {
    void operator()(crypt_data* data) const {
        ::explicit_bzero(data, sizeof *data);
        delete data;
    }
};

/// Empty when the setting is unknown or there is no memory.
std::string hashOf(const std::string& password, const std::string& setting) {
    const std::unique_ptr<crypt_data, Wiping> data(new crypt_data{});
    const char* const hash =
        ::crypt_rn(password.c_str(), setting.c_str(), data.get(), sizeof(crypt_data));
    return hash != nullptr && hash[0] != '*' ? hash : "";
}

/// Without an early end, which would tell how much was right.
bool isSame(const std::string& one, const std::string& other) {
    unsigned difference = one.size() == other.size() ? 0 : 1;
    for (std::size_t i = 0; i < one.size() && i < other.size(); ++i) {
        difference |= static_cast<unsigned>(one[i] != other[i]);
    }
    return difference == 0;
}

}  // namespace

bool PasswordHash::isPassword(const std::string& password) {
    return !password.empty() && password.size() <= kLongest &&
           password.find('\0') == std::string::npos;
}

std::string PasswordHash::make(const std::string& password, std::string& error) {
    if (!isPassword(password)) {
        error = "a password has 1 to " + std::to_string(kLongest) + " bytes and no NUL";
        return {};
    }
    char setting[CRYPT_GENSALT_OUTPUT_SIZE] = {};
    const bool hasSalt =
        ::crypt_gensalt_rn(kMethod, 0, nullptr, 0, setting, sizeof setting) != nullptr;
    std::string hash = hasSalt ? hashOf(password, setting) : "";
    if (hash.empty()) {
        error = "cannot hash the password: " + std::generic_category().message(errno);
    }
    return hash;
}

bool PasswordHash::matches(const std::string& password, const std::string& hash) {
    if (!isPassword(password)) {
        return false;
    }
    const std::string own = hashOf(password, hash);
    return !own.empty() && isSame(own, hash);
}

}  // namespace vireo
