// SystemLibraries: the libraries that are opened on demand, and the packages that bring them, as they are
// called on the system that this program was built on.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace kestrine {

enum class OnDemand : std::uint8_t {
    littleCMS,
    png,
    zlib,
    gif,
    tiff,
    webp,
    webpDemux,
    jxl,
    jxlThreads,
    de265,
    dav1d,
    avif,
    openJPEG,
    libRaw,
    rsvg,
    isal,
    icu,
    systemd,
    expat,
};

struct SystemLibrary {
    OnDemand library;
    const char* file;    ///< as the loader knows it, such as "libtiff.so.6"
    const char* package; ///< of Debian; `file` where the build did not know it
    const char* purpose; ///< what does not work without it
};

/// One row for each, made by CMake from SystemLibraryTable.cpp.in.
std::span<const SystemLibrary> systemLibraries();

const SystemLibrary& systemLibrary(OnDemand library);

/// The message for people when it is missing: `need`, such as "TIFF pictures need libtiff", and the package.
std::string missingMessage(const char* need, OnDemand library);

/// The libraries that the loader does not find.
std::vector<SystemLibrary> missingLibraries();

} // namespace kestrine
