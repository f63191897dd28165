#pragma once

#include <cstddef>

#include "log/Log.h"

namespace vireo {

/// A source file's name as log lines have it: "./src/items/ItemReader.cpp" without the ending.
template <std::size_t Size>
struct LogFileName {
    char text[Size]{};

    consteval explicit LogFileName(const char (&path)[Size]) {
        std::size_t end = Size - 1;
        for (std::size_t i = 0; i + 1 < Size; ++i) {
            if (path[i] == '.' && i > 0) {
                end = i;
            }
        }
        for (std::size_t i = 0; i < end; ++i) {
            text[i] = path[i];
        }
    }
};

}  // namespace vireo

// Logging that is off costs one branch: the arguments are not evaluated.
#define VIREO_LOG(component, level, ...)                                                   \
    do {                                                                                   \
        if (::vireo::loggingOnUni(level)) {                                                \
            static constexpr ::vireo::LogFileName logFileName(__FILE__);                   \
            ::vireo::logAppUni(component, logFileName.text, level, __LINE__, __VA_ARGS__); \
        }                                                                                  \
    } while (false)

#define VCMS_LOG(level, ...) VIREO_LOG("Vireo Client Management", level, __VA_ARGS__)
