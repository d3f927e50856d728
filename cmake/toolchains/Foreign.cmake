# Builds for another processor, with Debian's cross compiler. Debian's libraries for it must be in build/foreign/ (see
# scripts/install-dependencies --foreign); built programs run under QEMU's emulation of single programs.
# `processor` is the name in compilers, `architecture` the one in Debian.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR ${processor})
set(triplet ${processor}-linux-gnu)
cmake_path(SET root NORMALIZE "${CMAKE_CURRENT_LIST_DIR}/../../build/foreign/${architecture}")

set(CMAKE_CXX_COMPILER ${triplet}-g++)
set(CMAKE_LIBRARY_ARCHITECTURE ${triplet})
set(CMAKE_SYSROOT ${root})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
foreach(kind LIBRARY INCLUDE PACKAGE)
  set(CMAKE_FIND_ROOT_PATH_MODE_${kind} ONLY)
endforeach()
set(ENV{PKG_CONFIG_SYSROOT_DIR} ${root})
set(ENV{PKG_CONFIG_LIBDIR} ${root}/usr/lib/${triplet}/pkgconfig:${root}/usr/share/pkgconfig)
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-${processor}-static -L ${root})
