# Cross build for 64-bit ARM Linux with Debian's g++-aarch64-linux-gnu; tests run under
# qemu-aarch64. Needs the arm64 packages unpacked by `scripts/cross-sysroot arm64`.
#
#   cmake -S . -B build/aarch64 -DCMAKE_TOOLCHAIN_FILE=cmake/aarch64-linux-gnu.cmake
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(VY_CROSS_TRIPLE aarch64-linux-gnu)
set(VY_CROSS_ARCH arm64)
set(VY_CROSS_QEMU qemu-aarch64)
include(${CMAKE_CURRENT_LIST_DIR}/debian-cross.cmake)
