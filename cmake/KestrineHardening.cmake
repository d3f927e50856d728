# kestrine_hardening: the flags that make mistakes in memory harder to exploit. Every executable that links to it has
# them, and so has every library. tests/repository/check_hardening.py checks the built programs.

include(CheckPIESupported)
check_pie_supported(LANGUAGES CXX)

add_library(kestrine_hardening INTERFACE)
target_compile_options(kestrine_hardening INTERFACE -fstack-protector-strong -fstack-clash-protection)
# The C library checks sizes only in optimised code.
target_compile_options(kestrine_hardening INTERFACE
                       $<$<NOT:$<CONFIG:Debug>>:-U_FORTIFY_SOURCE$<SEMICOLON>-D_FORTIFY_SOURCE=3>)
if(CMAKE_SYSTEM_PROCESSOR MATCHES "^(x86_64|amd64|AMD64|i[3-6]86)$")
  target_compile_options(kestrine_hardening INTERFACE -fcf-protection=full)
endif()
target_link_options(kestrine_hardening INTERFACE LINKER:-z,relro LINKER:-z,now LINKER:-z,noexecstack)
# The loader looks up every symbol at the start. Most are in the C library, so it is searched first.
target_link_options(kestrine_hardening INTERFACE LINKER:-l:libc.so.6)
