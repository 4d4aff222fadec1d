# The body of the ARM toolchain files: a cross build with a Debian cross compiler for the
# triple in VY_CROSS_TRIPLE (Debian architecture VY_CROSS_ARCH), tests run under the qemu
# user-mode emulator VY_CROSS_QEMU. The including file sets those three and
# CMAKE_SYSTEM_PROCESSOR.
#
# Two roots hold the target's files: the cross compiler's own tree in /usr/<triple> (libc,
# libstdc++) and a folder of unpacked Debian packages of the architecture (FreeType and its
# dependencies, GoogleTest) made by scripts/cross-sysroot, by default .sysroot/<arch> in the
# source tree. Programs run under qemu, which finds the dynamic loader through -L and the
# packaged libraries through LD_LIBRARY_PATH; ctest and gtest_discover_tests go through it.
#
# The unpacked packages keep Debian's layout, so pkg-config works with
#   PKG_CONFIG_SYSROOT_DIR=<sysroot>
#   PKG_CONFIG_LIBDIR=<sysroot>/usr/lib/<triple>/pkgconfig:<sysroot>/usr/share/pkgconfig
# (set below for CMake's FindPkgConfig) and find_package(Freetype) finds the folder's copy.

set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_LIBRARY_ARCHITECTURE ${VY_CROSS_TRIPLE})

set(CMAKE_C_COMPILER ${VY_CROSS_TRIPLE}-gcc)
set(CMAKE_CXX_COMPILER ${VY_CROSS_TRIPLE}-g++)

set(VY_CROSS_TOOLCHAIN_ROOT /usr/${VY_CROSS_TRIPLE}
    CACHE PATH "The cross compiler's target tree (libc, libstdc++, dynamic loader)")
get_filename_component(_vy_default_sysroot
                       "${CMAKE_CURRENT_LIST_DIR}/../.sysroot/${VY_CROSS_ARCH}" ABSOLUTE)
set(VY_CROSS_SYSROOT "${_vy_default_sysroot}"
    CACHE PATH "Folder of unpacked ${VY_CROSS_ARCH} packages (scripts/cross-sysroot)")
unset(_vy_default_sysroot)
# try_compile projects re-read this file without the cache; pass the folders on.
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES VY_CROSS_SYSROOT VY_CROSS_TOOLCHAIN_ROOT)

if(NOT EXISTS "${VY_CROSS_SYSROOT}/.complete")
  message(FATAL_ERROR "${VY_CROSS_ARCH} packages missing in ${VY_CROSS_SYSROOT}: "
                      "run scripts/cross-sysroot ${VY_CROSS_ARCH}")
endif()

set(CMAKE_FIND_ROOT_PATH "${VY_CROSS_SYSROOT}" "${VY_CROSS_TOOLCHAIN_ROOT}")
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# Shared libraries in the folder depend on each other (libfreetype -> libpng -> libz); let the
# linker follow those dependencies without baking the folder into the binaries.
set(_vy_target_libdirs
    "${VY_CROSS_SYSROOT}/usr/lib/${VY_CROSS_TRIPLE}"
    "${VY_CROSS_SYSROOT}/lib/${VY_CROSS_TRIPLE}")
set(_vy_rpath_link "")
foreach(dir IN LISTS _vy_target_libdirs)
  string(APPEND _vy_rpath_link " -Wl,-rpath-link,${dir}")
endforeach()
set(CMAKE_EXE_LINKER_FLAGS_INIT "${_vy_rpath_link}")
set(CMAKE_SHARED_LINKER_FLAGS_INIT "${_vy_rpath_link}")
set(CMAKE_MODULE_LINKER_FLAGS_INIT "${_vy_rpath_link}")

# pkg-config looks only inside the folder and prefixes its paths with it.
set(ENV{PKG_CONFIG_SYSROOT_DIR} "${VY_CROSS_SYSROOT}")
set(ENV{PKG_CONFIG_LIBDIR}
    "${VY_CROSS_SYSROOT}/usr/lib/${VY_CROSS_TRIPLE}/pkgconfig:${VY_CROSS_SYSROOT}/usr/share/pkgconfig")
unset(ENV{PKG_CONFIG_PATH})

find_program(VY_CROSS_EMULATOR ${VY_CROSS_QEMU})
if(VY_CROSS_EMULATOR)
  list(JOIN _vy_target_libdirs ":" _vy_ld_path)
  set(CMAKE_CROSSCOMPILING_EMULATOR
      "${VY_CROSS_EMULATOR};-L;${VY_CROSS_TOOLCHAIN_ROOT};-E;LD_LIBRARY_PATH=${_vy_ld_path}")
  unset(_vy_ld_path)
endif()
unset(_vy_target_libdirs)
unset(_vy_rpath_link)
