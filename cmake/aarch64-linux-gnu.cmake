# Cross build for 64-bit Arm Linux with Debian's aarch64 toolchain and the
# arm64 libraries installed beside the native ones (multiarch), so headers and
# libraries are found in the usual places, under lib/aarch64-linux-gnu.
# Programs built here (the test suites, and gtest_discover_tests listing them)
# run under qemu-user.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(CMAKE_LIBRARY_ARCHITECTURE aarch64-linux-gnu)
set(CMAKE_C_COMPILER aarch64-linux-gnu-gcc)
set(CMAKE_CXX_COMPILER aarch64-linux-gnu-g++)

# -L: the loader and C++ runtime of the cross toolchain stand in for the
# device's; the arm64 libraries of the multiarch packages (GoogleTest, libspng)
# are found in /usr/lib/aarch64-linux-gnu, where the loader looks too.
find_program(ZELTO_QEMU_AARCH64 qemu-aarch64 REQUIRED)
set(CMAKE_CROSSCOMPILING_EMULATOR ${ZELTO_QEMU_AARCH64} -L /usr/aarch64-linux-gnu)

# pkg-config must describe the arm64 libraries, not the native ones.
set(ENV{PKG_CONFIG_LIBDIR} /usr/lib/aarch64-linux-gnu/pkgconfig:/usr/share/pkgconfig)
