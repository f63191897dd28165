#pragma once

#include <stdexcept>
#include <string>

namespace vireo::bench {

/// What ends a measurement. A row that fails is reported as such, the others are still measured.
class Failure : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

inline void require(bool holds, const char* what) {
    if (!holds) {
        throw Failure(what);
    }
}

/// With the text of `errno`.
[[noreturn]] void failSystem(const std::string& what);

}  // namespace vireo::bench
