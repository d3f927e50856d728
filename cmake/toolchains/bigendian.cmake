# IBM Z: the big-endian processor that Debian supports.
set(processor s390x)
set(architecture s390x)
include(${CMAKE_CURRENT_LIST_DIR}/Foreign.cmake)
