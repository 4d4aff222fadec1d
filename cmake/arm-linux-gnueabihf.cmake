# Cross build for 32-bit ARM Linux (hard float) with Debian's g++-arm-linux-gnueabihf; tests
# run under qemu-arm. Needs the armhf packages unpacked by `scripts/cross-sysroot armhf`.
#
#   cmake -S . -B build/armhf -DCMAKE_TOOLCHAIN_FILE=cmake/arm-linux-gnueabihf.cmake
set(CMAKE_SYSTEM_PROCESSOR arm)
set(VY_CROSS_TRIPLE arm-linux-gnueabihf)
set(VY_CROSS_ARCH armhf)
set(VY_CROSS_QEMU qemu-arm)
include(${CMAKE_CURRENT_LIST_DIR}/debian-cross.cmake)
