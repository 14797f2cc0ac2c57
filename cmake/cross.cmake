# 32-bit ARM as the device has it: Debian's cross compiler, Debian's armhf libraries in a sysroot
# made by make-sysroot.sh, and user-mode emulation to run what was built.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR armv7l)
set(CMAKE_LIBRARY_ARCHITECTURE arm-linux-gnueabihf)

set(QP_SYSROOT "${CMAKE_CURRENT_LIST_DIR}/../build/sysroot-armhf" CACHE PATH "Unpacked armhf packages")
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES QP_SYSROOT)
get_filename_component(CMAKE_SYSROOT "${QP_SYSROOT}" ABSOLUTE)
if(NOT EXISTS ${CMAKE_SYSROOT}/.packages)
  message(FATAL_ERROR "There is no sysroot in ${CMAKE_SYSROOT}: run tools/make-sysroot.sh first")
endif()

set(CMAKE_C_COMPILER arm-linux-gnueabihf-gcc)
set(CMAKE_CXX_COMPILER arm-linux-gnueabihf-g++)

set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
set(ENV{PKG_CONFIG_SYSROOT_DIR} ${CMAKE_SYSROOT})
set(ENV{PKG_CONFIG_LIBDIR} ${CMAKE_SYSROOT}/usr/lib/arm-linux-gnueabihf/pkgconfig:${CMAKE_SYSROOT}/usr/share/pkgconfig)

# qemu looks up each path that a program opens in the sysroot first, so plugins and drivers are found.
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-arm-static;-L;${CMAKE_SYSROOT})
