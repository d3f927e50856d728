#include "platform/host/process/DynamicLibrary.h"

#include <dlfcn.h>

namespace kestrine {

Result<DynamicLibrary> DynamicLibrary::open(std::initializer_list<const char*> names) {
    for (const char* name : names)
        if (void* handle = ::dlopen(name, RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE))
            return DynamicLibrary(handle);
    const char* message = ::dlerror();
    return Failure{Reason::unsupported, message != nullptr ? message : "no library name was given"};
}

void* DynamicLibrary::address(const char* name) const { return ::dlsym(handle_, name); }

} // namespace kestrine
