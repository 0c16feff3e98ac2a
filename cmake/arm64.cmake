# Toolchain: Debian's cross compiler for arm64; what is built runs under qemu-user.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(CMAKE_CXX_COMPILER aarch64-linux-gnu-g++)
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-aarch64-static)
# The tests' bounds on CPU are for a machine, not for its emulator.
set(CMAKE_CXX_FLAGS_INIT -DTARVOLINK_EMULATED)
