# Builds for Debian on arm64 on a machine that is not: Debian's cross compiler, arm64 packages beside the machine's own.
# What was built runs under qemu's emulation of programs.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(CMAKE_C_COMPILER aarch64-linux-gnu-gcc)
set(CMAKE_CXX_COMPILER aarch64-linux-gnu-g++)
set(CMAKE_LIBRARY_ARCHITECTURE aarch64-linux-gnu)
set(PKG_CONFIG_EXECUTABLE aarch64-linux-gnu-pkg-config)
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-aarch64)
set(CPACK_DEBIAN_PACKAGE_ARCHITECTURE arm64)
