// SystemLibraries: the libraries that are opened on demand, and the Debian packages that bring them.
#pragma once

#include <string>
#include <vector>

namespace kestrine {

struct SystemLibrary {
    const char* file;    ///< as the loader knows it
    const char* package; ///< of Debian 12
    const char* purpose; ///< what does not work without it
};

/// Those that the loader does not find.
std::vector<SystemLibrary> missingLibraries();

/// All of them.
const std::vector<SystemLibrary>& systemLibraries();

} // namespace kestrine
