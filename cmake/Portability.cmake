# What a target may need beyond the defaults.
include(CheckCXXSourceCompiles)

# Processors without 64-bit atomic instructions have them in a library.
set(atomic_source "#include <atomic>
#include <cstdint>
int main(int argc, char**) {
    std::atomic<std::int64_t> value{argc};
    return static_cast<int>(value.fetch_add(argc));
}")
check_cxx_source_compiles("${atomic_source}" VIREO_HAS_ATOMICS)
if(NOT VIREO_HAS_ATOMICS)
    # At the end of the line, behind the libraries that may need it.
    string(APPEND CMAKE_CXX_STANDARD_LIBRARIES " -Wl,--as-needed -latomic")
endif()

# A file may be larger than 2 GiB, and the year 2038 comes within a phone's life.
check_cxx_source_compiles("#include <ctime>
#include <sys/types.h>
static_assert(sizeof(std::time_t) >= 8 && sizeof(off_t) >= 8);
int main() {}" VIREO_HAS_WIDE_TIME)
if(NOT VIREO_HAS_WIDE_TIME)
    message(WARNING "time_t or off_t has 32 bits; build this and all libraries with "
            "-D_FILE_OFFSET_BITS=64 -D_TIME_BITS=64 where the C library knows them")
endif()
