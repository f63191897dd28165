#pragma once

#include <functional>
#include <string_view>

namespace vireo {

/// Lets hash maps of strings be searched with views, without a copy.
struct TextHash {
    using is_transparent = void;
    std::size_t operator()(std::string_view text) const noexcept {
        return std::hash<std::string_view>{}(text);
    }
};

}  // namespace vireo
