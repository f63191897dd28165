# 32-bit big-endian MIPS.
set(VIREO_TARGET mips)
set(VIREO_TRIPLET mips-linux-gnu)
include(${CMAKE_CURRENT_LIST_DIR}/debian-cross.cmake)

# The C library's types of time and file size have 32 bits unless it is told. All libraries of the
# target are built alike, so that they agree on those types.
set(CMAKE_C_FLAGS_INIT "-D_FILE_OFFSET_BITS=64 -D_TIME_BITS=64")
set(CMAKE_CXX_FLAGS_INIT "-D_FILE_OFFSET_BITS=64 -D_TIME_BITS=64")
