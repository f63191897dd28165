#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace vireo {

/// The phone's busy mask as a person types and reads it.
class BusyMask {
public:
    /// Bits in decimal, or in hexadecimal behind "0x". None for anything else and for more than 32
    /// bits; `error` then names the argument.
    static std::optional<unsigned> parse(std::string_view argument, std::string& error);

    /// What the bits stand for, such as "1 call, 512 software update"; "idle" for none.
    static std::string describe(unsigned mask);
};

}  // namespace vireo
