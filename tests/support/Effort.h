#pragma once

#include <cstdlib>

namespace vireo::test {

/// How long or how often a test runs that may run for as long as one likes: what the environment
/// says, or else `usual`.
inline long effort(const char* variable, long usual) {
    const char* const wanted = std::getenv(variable);
    return wanted != nullptr ? std::atol(wanted) : usual;
}

}  // namespace vireo::test
