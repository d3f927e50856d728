// DynamicLibrary: a shared library that is loaded at run time.
#pragma once

#include "platform/host/Result.h"

#include <initializer_list>
#include <string>

namespace kestrine {

/// The library stays loaded until the process ends, so its functions remain valid. Copies refer to the same
/// library.
class DynamicLibrary {
public:
    /// Opens the first of `names` (such as "libtiff.so.6") that the system's loader finds, and binds all its
    /// functions. Fails with unsupported and the loader's last message if it finds none.
    static Result<DynamicLibrary> open(std::initializer_list<const char*> names);

    /// The functions of the first of `names`: `find` sets the fields of `functions` and returns whether all
    /// that are needed exist. Fails with unsupported and `missing`, which names the package, if the library
    /// or a function is absent.
    template <class Functions>
    static Result<Functions> load(std::initializer_list<const char*> names, const std::string& missing,
                                  bool find(const DynamicLibrary& library, Functions& functions)) {
        const Result<DynamicLibrary> library = open(names);
        Functions functions{};
        if (!library || !find(*library, functions))
            return Failure{Reason::unsupported, missing};
        return functions;
    }

    /// The function or variable with that name, or null. Example: symbol<int(const char*)>("puts").
    template <class T>
    T* symbol(const char* name) const {
        return reinterpret_cast<T*>(address(name));
    }

    /// Sets `function` to the one with that name, or to null. Returns whether it exists.
    template <class F>
    bool find(F*& function, const char* name) const {
        function = symbol<F>(name);
        return function != nullptr;
    }

private:
    explicit DynamicLibrary(void* handle) : handle_(handle) {}
    void* address(const char* name) const;

    void* handle_;
};

} // namespace kestrine
