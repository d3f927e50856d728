# 64-bit ARM: little-endian.
set(processor aarch64)
set(architecture arm64)
include(${CMAKE_CURRENT_LIST_DIR}/Foreign.cmake)
