// FreeDeleter: lets std::unique_ptr own memory that a C library allocated with malloc().
#pragma once

#include <cstdlib>

namespace kestrine {

struct FreeDeleter {
    void operator()(void* memory) const { std::free(memory); }
};

} // namespace kestrine
