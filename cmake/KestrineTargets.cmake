# What every target of this project shares, and the one rule that a folder of sources is a library.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)

# Sources are compiled in groups: most of a file's time is its standard headers. scripts/check tidy reads every
# file alone. What includes itself again for each processor (kernels) stays alone.
option(KESTRINE_GROUPED_BUILD "Compile the sources of a library in groups, in a third of the time" ON)
set(CMAKE_UNITY_BUILD ${KESTRINE_GROUPED_BUILD})
set(CMAKE_UNITY_BUILD_BATCH_SIZE 12)

include(GNUInstallDirs)
find_package(PkgConfig REQUIRED)
find_package(Threads REQUIRED)

# kestrine_settings: the language rules. Single precision is promised with every rounding it implies, so
# the compiler may not fuse a multiplication and an addition.
add_library(kestrine_settings INTERFACE)
target_include_directories(kestrine_settings INTERFACE ${PROJECT_SOURCE_DIR}/src)
target_compile_options(kestrine_settings INTERFACE -ffp-contract=off -Wall -Wextra
                       $<$<CXX_COMPILER_ID:GNU>:-Wshadow=local> -Wconversion
                       -Wno-sign-conversion -Wno-missing-field-initializers -fno-math-errno
                       $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>  # GCC 12 warns of std::string's own copies
                       $<$<CXX_COMPILER_ID:GNU>:-fpch-preprocess>) # lets ccache keep what uses precompiled headers
target_compile_definitions(kestrine_settings INTERFACE _FILE_OFFSET_BITS=64)
if(KESTRINE_DEVELOPER)
  target_compile_options(kestrine_settings INTERFACE -Werror)
endif()
if(KESTRINE_HARDENED)
  include(KestrineHardening)
  target_link_libraries(kestrine_settings INTERFACE kestrine_hardening)
endif()

# kestrine_library(NAME [DEPENDS libraries of ours] [PACKAGES pkg-config names]): a static library of all
# sources in the current folder and its subfolders. Third-party packages stay private to the folder. The global
# properties KESTRINE_LIBRARIES and KESTRINE_PACKAGES list all of both.
function(kestrine_library name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "DEPENDS;PACKAGES")
  file(GLOB_RECURSE sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*.cpp)
  add_library(kestrine_${name} STATIC ${sources})
  list(FILTER sources INCLUDE REGEX "/kernels/")
  set_source_files_properties(${sources} PROPERTIES SKIP_UNITY_BUILD_INCLUSION ON)
  list(TRANSFORM arg_DEPENDS PREPEND kestrine_)
  target_link_libraries(kestrine_${name} PUBLIC kestrine_settings ${arg_DEPENDS})
  foreach(package IN LISTS arg_PACKAGES)
    string(MAKE_C_IDENTIFIER ${package} id)
    pkg_check_modules(${id} REQUIRED IMPORTED_TARGET GLOBAL ${package})
    target_link_libraries(kestrine_${name} PRIVATE PkgConfig::${id})
  endforeach()
  set_property(GLOBAL APPEND PROPERTY KESTRINE_LIBRARIES kestrine_${name})
  set_property(GLOBAL APPEND PROPERTY KESTRINE_PACKAGES ${arg_PACKAGES})
endfunction()

# Of Highway only the headers are used (see coregraphics/kernels/TargetSelection.cpp). Kernels are built for SSE4,
# AVX2 and AVX-512 (NEON on ARM) besides the plain loops; the steps between gain nothing. SVE's vectors cannot be
# members of structures.
add_library(kestrine_kernel_settings INTERFACE)
set(disabled_targets "HWY_SSSE3|HWY_AVX3_DL|HWY_SVE|HWY_SVE2|HWY_SVE_256|HWY_SVE2_128")
target_compile_definitions(kestrine_kernel_settings INTERFACE "HWY_DISABLED_TARGETS=(${disabled_targets})")
