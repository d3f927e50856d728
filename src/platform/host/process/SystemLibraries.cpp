#include "platform/host/process/SystemLibraries.h"

#include "platform/host/process/DynamicLibrary.h"

#include <algorithm>

namespace kestrine {

const SystemLibrary& systemLibrary(OnDemand library) {
    return *std::ranges::find(systemLibraries(), library, &SystemLibrary::library);
}

std::string missingMessage(const char* need, OnDemand library) {
    return std::string(need) + " (package " + systemLibrary(library).package + ")";
}

std::vector<SystemLibrary> missingLibraries() {
    std::vector<SystemLibrary> missing;
    for (const SystemLibrary& library : systemLibraries())
        if (!DynamicLibrary::open({library.file}))
            missing.push_back(library);
    return missing;
}

} // namespace kestrine
