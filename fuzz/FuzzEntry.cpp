#include <cstddef>
#include <cstdint>

#include "Fuzz.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    vireo::fuzz::run({reinterpret_cast<const char*>(data), size});
    return 0;
}
