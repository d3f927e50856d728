// DynamicLibrary: a shared library that is opened when it is first needed.
#pragma once

#include "platform/host/Result.h"

#include <initializer_list>

namespace kestrine {

/// Stays loaded until the process ends, so functions got from it never dangle; copies are free.
class DynamicLibrary {
public:
    /// Opens the first of `names` ("libtiff.so.6") that the system's loader finds, with all its
    /// functions bound. unsupported, with the loader's last message, when there is none.
    static Result<DynamicLibrary> open(std::initializer_list<const char*> names);

    /// The function or variable of that name, or null: symbol<int(const char*)>("puts").
    template <class T>
    T* symbol(const char* name) const {
        return reinterpret_cast<T*>(address(name));
    }

private:
    explicit DynamicLibrary(void* handle) : handle_(handle) {}
    void* address(const char* name) const;

    void* handle_;
};

} // namespace kestrine
