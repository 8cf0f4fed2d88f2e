# A toolchain file: builds on Debian for 64-bit ARM with Debian's cross compiler and libraries of both
# architectures. Tests run in an emulator. scripts/arm64 makes the system for it.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(CMAKE_CXX_COMPILER aarch64-linux-gnu-g++)
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-aarch64-static)

set(ENV{PKG_CONFIG_LIBDIR} /usr/lib/aarch64-linux-gnu/pkgconfig:/usr/share/pkgconfig)

# Qt's own tools run on the building machine. Their CMake files are the same for each architecture.
set(QT_HOST_PATH /usr)
set(QT_HOST_PATH_CMAKE_DIR /usr/lib/aarch64-linux-gnu/cmake)
