# 64-bit big-endian S/390, where char is unsigned.
set(VIREO_TARGET s390x)
set(VIREO_TRIPLET s390x-linux-gnu)
include(${CMAKE_CURRENT_LIST_DIR}/debian-cross.cmake)
