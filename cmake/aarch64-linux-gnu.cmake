# Cross-building for 64-bit ARM Linux with the GNU cross compilers.
#
#   cmake -S . -B build-aarch64 -DCMAKE_TOOLCHAIN_FILE=cmake/aarch64-linux-gnu.cmake
#
# Two ways to find the target's libraries:
#  - Debian multiarch (the default): the arm64 development packages are
#    installed beside the amd64 ones (scripts/install-deps-aarch64) and live
#    under /usr/lib/aarch64-linux-gnu. Packages that cannot be co-installed
#    are unpacked into QUORVEL_EXTRA_ROOT, searched before the system.
#  - A sysroot: -DCMAKE_SYSROOT=/path/to/device/root (a copy of the device's
#    root file system with its development packages). Everything is then
#    looked up inside it only.
# Test programs run under qemu-user (CMAKE_CROSSCOMPILING_EMULATOR); the
# programs they start themselves need the kernel's binfmt entry for qemu.

set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(CMAKE_LIBRARY_ARCHITECTURE aarch64-linux-gnu)

set(QUORVEL_CROSS_PREFIX aarch64-linux-gnu- CACHE STRING "Prefix of the cross tools' names")
set(CMAKE_C_COMPILER ${QUORVEL_CROSS_PREFIX}gcc)
set(CMAKE_CXX_COMPILER ${QUORVEL_CROSS_PREFIX}g++)

set(QUORVEL_EXTRA_ROOT /opt/quorvel-arm64-extra CACHE PATH
    "Unpacked arm64 packages that multiarch cannot install (multiarch builds only)")

# Host programs (pkg-config, sh, ffprobe) are found on the host; libraries,
# headers and packages only for the target.
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)

if(CMAKE_SYSROOT)
  set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
  set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
  set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
  set(ENV{PKG_CONFIG_SYSROOT_DIR} ${CMAKE_SYSROOT})
  set(ENV{PKG_CONFIG_LIBDIR}
      "${CMAKE_SYSROOT}/usr/lib/aarch64-linux-gnu/pkgconfig:${CMAKE_SYSROOT}/usr/lib/pkgconfig:${CMAKE_SYSROOT}/usr/share/pkgconfig")
  set(_qemu_root ${CMAKE_SYSROOT})
else()
  # Multiarch: the target's files share /usr with the host's, in their own
  # architecture folders, so only pkg-config needs telling where to look.
  set(ENV{PKG_CONFIG_LIBDIR}
      "${QUORVEL_EXTRA_ROOT}/usr/lib/aarch64-linux-gnu/pkgconfig:/usr/lib/aarch64-linux-gnu/pkgconfig:/usr/share/pkgconfig")
  set(_qemu_root /)
endif()
unset(ENV{PKG_CONFIG_PATH})

find_program(QUORVEL_QEMU NAMES qemu-aarch64-static qemu-aarch64)
if(QUORVEL_QEMU)
  set(CMAKE_CROSSCOMPILING_EMULATOR ${QUORVEL_QEMU} -L ${_qemu_root})
endif()
