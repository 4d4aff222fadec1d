# Cross build for 32-bit ARM Linux (hard float) with Debian's g++-arm-linux-gnueabihf.
#
# Two roots hold the target's files: the cross compiler's own tree in /usr/arm-linux-gnueabihf
# (libc, libstdc++) and a folder of unpacked Debian armhf packages (FreeType and its
# dependencies, GoogleTest) made by scripts/armhf-sysroot, by default .sysroot/armhf in the
# source tree. Programs run under qemu-arm, which finds the dynamic loader through -L and the
# packaged libraries through LD_LIBRARY_PATH; ctest and gtest_discover_tests go through it.
#
#   cmake -S . -B build/armhf -DCMAKE_TOOLCHAIN_FILE=cmake/arm-linux-gnueabihf.cmake
#
# The unpacked packages keep Debian's layout, so pkg-config works with
#   PKG_CONFIG_SYSROOT_DIR=<sysroot>
#   PKG_CONFIG_LIBDIR=<sysroot>/usr/lib/arm-linux-gnueabihf/pkgconfig:<sysroot>/usr/share/pkgconfig
# (set below for CMake's FindPkgConfig) and find_package(Freetype) finds the folder's copy.

set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR arm)
set(CMAKE_LIBRARY_ARCHITECTURE arm-linux-gnueabihf)

set(CMAKE_C_COMPILER arm-linux-gnueabihf-gcc)
set(CMAKE_CXX_COMPILER arm-linux-gnueabihf-g++)

set(VY_ARMHF_TOOLCHAIN_ROOT /usr/arm-linux-gnueabihf
    CACHE PATH "The cross compiler's target tree (libc, libstdc++, dynamic loader)")
get_filename_component(_vy_default_sysroot "${CMAKE_CURRENT_LIST_DIR}/../.sysroot/armhf" ABSOLUTE)
set(VY_ARMHF_SYSROOT "${_vy_default_sysroot}"
    CACHE PATH "Folder of unpacked armhf packages (scripts/armhf-sysroot)")
unset(_vy_default_sysroot)
# try_compile projects re-read this file without the cache; pass the folders on.
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES VY_ARMHF_SYSROOT VY_ARMHF_TOOLCHAIN_ROOT)

if(NOT EXISTS "${VY_ARMHF_SYSROOT}/.complete")
  message(FATAL_ERROR "armhf packages missing in ${VY_ARMHF_SYSROOT}: run scripts/armhf-sysroot")
endif()

set(CMAKE_FIND_ROOT_PATH "${VY_ARMHF_SYSROOT}" "${VY_ARMHF_TOOLCHAIN_ROOT}")
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# Shared libraries in the folder depend on each other (libfreetype -> libpng -> libz); let the
# linker follow those dependencies without baking the folder into the binaries.
set(_vy_target_libdirs
    "${VY_ARMHF_SYSROOT}/usr/lib/arm-linux-gnueabihf"
    "${VY_ARMHF_SYSROOT}/lib/arm-linux-gnueabihf")
set(_vy_rpath_link "")
foreach(dir IN LISTS _vy_target_libdirs)
  string(APPEND _vy_rpath_link " -Wl,-rpath-link,${dir}")
endforeach()
set(CMAKE_EXE_LINKER_FLAGS_INIT "${_vy_rpath_link}")
set(CMAKE_SHARED_LINKER_FLAGS_INIT "${_vy_rpath_link}")
set(CMAKE_MODULE_LINKER_FLAGS_INIT "${_vy_rpath_link}")

# pkg-config looks only inside the folder and prefixes its paths with it.
set(ENV{PKG_CONFIG_SYSROOT_DIR} "${VY_ARMHF_SYSROOT}")
set(ENV{PKG_CONFIG_LIBDIR}
    "${VY_ARMHF_SYSROOT}/usr/lib/arm-linux-gnueabihf/pkgconfig:${VY_ARMHF_SYSROOT}/usr/share/pkgconfig")
unset(ENV{PKG_CONFIG_PATH})

find_program(VY_QEMU_ARM qemu-arm)
if(VY_QEMU_ARM)
  list(JOIN _vy_target_libdirs ":" _vy_ld_path)
  set(CMAKE_CROSSCOMPILING_EMULATOR
      "${VY_QEMU_ARM};-L;${VY_ARMHF_TOOLCHAIN_ROOT};-E;LD_LIBRARY_PATH=${_vy_ld_path}")
endif()
unset(_vy_target_libdirs)
unset(_vy_rpath_link)
