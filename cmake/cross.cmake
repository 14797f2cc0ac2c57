# Cross-builds for ARM, 32 bits (QP_ARCH=armhf, as the device) or 64 (arm64): Debian's cross compiler,
# Debian's libraries in a sysroot of make-sysroot.sh, and an emulator that runs what was built.
set(QP_ARCH armhf CACHE STRING "Debian's name of the architecture")
set(QP_SYSROOT "${CMAKE_CURRENT_LIST_DIR}/../build/sysroot-${QP_ARCH}" CACHE PATH "Its unpacked packages")
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES QP_ARCH QP_SYSROOT)
if(QP_ARCH STREQUAL "arm64")
  set(CMAKE_SYSTEM_PROCESSOR aarch64)
  set(CMAKE_LIBRARY_ARCHITECTURE aarch64-linux-gnu)
else()
  set(CMAKE_SYSTEM_PROCESSOR arm)
  set(CMAKE_LIBRARY_ARCHITECTURE arm-linux-gnueabihf)
endif()
set(CMAKE_SYSTEM_NAME Linux)

get_filename_component(CMAKE_SYSROOT "${QP_SYSROOT}" ABSOLUTE)
if(NOT EXISTS ${CMAKE_SYSROOT}/.packages)
  message(FATAL_ERROR "There is no sysroot in ${CMAKE_SYSROOT}: run tools/make-sysroot.sh ${QP_ARCH} first")
endif()

set(CMAKE_C_COMPILER ${CMAKE_LIBRARY_ARCHITECTURE}-gcc)
set(CMAKE_CXX_COMPILER ${CMAKE_LIBRARY_ARCHITECTURE}-g++)

set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
set(ENV{PKG_CONFIG_SYSROOT_DIR} ${CMAKE_SYSROOT})
set(ENV{PKG_CONFIG_LIBDIR}
  ${CMAKE_SYSROOT}/usr/lib/${CMAKE_LIBRARY_ARCHITECTURE}/pkgconfig:${CMAKE_SYSROOT}/usr/share/pkgconfig)

# For each path that a program opens, qemu looks in the sysroot first and so finds plugins and drivers.
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-${CMAKE_SYSTEM_PROCESSOR}-static;-L;${CMAKE_SYSROOT})
