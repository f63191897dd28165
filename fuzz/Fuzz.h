#pragma once

#include <cstdio>
#include <cstdlib>
#include <string_view>

namespace vireo::fuzz {

/// One target: takes any bytes. What it lets out, and a requirement that does not hold, ends the
/// run, and the bytes are kept. Each program has exactly one.
void run(std::string_view input);

/// Something that has to hold whatever the input is; `what` says it in words.
inline void require(bool holds, const char* what) {
    if (!holds) {
        std::fprintf(stderr, "does not hold: %s\n", what);
        std::abort();
    }
}

/// Takes the first byte off the input, as a choice of the target; 0 when there is none.
inline unsigned char takeChoice(std::string_view& input) {
    if (input.empty()) {
        return 0;
    }
    const auto choice = static_cast<unsigned char>(input.front());
    input.remove_prefix(1);
    return choice;
}

}  // namespace vireo::fuzz
