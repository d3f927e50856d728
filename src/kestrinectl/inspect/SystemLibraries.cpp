#include "kestrinectl/inspect/SystemLibraries.h"

#include "platform/host/process/DynamicLibrary.h"

namespace kestrine {

const std::vector<SystemLibrary>& systemLibraries() {
    static const std::vector<SystemLibrary> libraries = {
        {"liblcms2.so.2", "liblcms2-2", "all pictures"},
        {"libpng16.so.16", "libpng16-16", "PNG files"},
        {"libz.so.1", "zlib1g", "PNG files and compressed SVG drawings"},
        {"libgif.so.7", "libgif7", "GIF files"},
        {"libtiff.so.6", "libtiff6", "TIFF files"},
        {"libwebp.so.7", "libwebp7", "WebP files"},
        {"libwebpdemux.so.2", "libwebpdemux2", "WebP files"},
        {"libjxl.so.0.7", "libjxl0.7", "JPEG XL files"},
        {"libjxl_threads.so.0.7", "libjxl0.7", "JPEG XL files"},
        {"libde265.so.0", "libde265-0", "HEIC files"},
        {"libdav1d.so.6", "libdav1d6", "AVIF files"},
        {"libavif.so.15", "libavif15", "writing AVIF files"},
        {"libopenjp2.so.7", "libopenjp2-7", "JPEG 2000 files and ICNS icons"},
        {"libraw_r.so.20", "libraw20", "camera raw files"},
        {"librsvg-2.so.2", "librsvg2-2", "SVG drawings"},
        {"libisal.so.2", "libisal2", "faster decoding of PNG"},
        {"libicuuc.so.72", "libicu72", "letters beyond ASCII in the names of sets"},
        {"libsystemd.so.0", "libsystemd0", "the desktop's dialog for choosing a folder"},
        {"libexpat.so.1", "libexpat1", "actions of Thunar"},
    };
    return libraries;
}

std::vector<SystemLibrary> missingLibraries() {
    std::vector<SystemLibrary> missing;
    for (const SystemLibrary& library : systemLibraries())
        if (!DynamicLibrary::open({library.file}))
            missing.push_back(library);
    return missing;
}

} // namespace kestrine
