# What the cross builds on Debian share. The including file sets VIREO_TARGET (the name of the target
# and of its emulator) and VIREO_TRIPLET (the name of its compilers).
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR ${VIREO_TARGET})
set(CMAKE_C_COMPILER ${VIREO_TRIPLET}-gcc)
set(CMAKE_CXX_COMPILER ${VIREO_TRIPLET}-g++)

# Filled by scripts/cross-sysroot. With it the compiler does not look into /usr/include, which holds
# the headers of the building machine.
get_filename_component(CMAKE_SYSROOT
    ${CMAKE_CURRENT_LIST_DIR}/../../build/cross/${VIREO_TARGET}/sysroot ABSOLUTE)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
set(ENV{PKG_CONFIG_SYSROOT_DIR} ${CMAKE_SYSROOT})
set(ENV{PKG_CONFIG_PATH} "")
string(CONCAT pkg_config_dirs ${CMAKE_SYSROOT}/usr/lib/${VIREO_TRIPLET}/pkgconfig:
       ${CMAKE_SYSROOT}/usr/lib/pkgconfig:${CMAKE_SYSROOT}/usr/share/pkgconfig)
set(ENV{PKG_CONFIG_LIBDIR} ${pkg_config_dirs})

set(CMAKE_CROSSCOMPILING_EMULATOR qemu-${VIREO_TARGET} -L ${CMAKE_SYSROOT})
