#include "platform/finder/FilePackage.h"

#include "platform/finder/FinderMetadata.h"
#include "platform/host/PathParts.h"

#include <algorithm>
#include <string_view>
#include <sys/stat.h>

namespace kestrine {

namespace {

/// The Finder flag of a folder that is a package whatever its name.
constexpr std::uint16_t bundleFlag = 0x2000;

/// Programs, what extends them, and documents that are kept as folders. In lower case.
constexpr std::string_view extensions[] = {
    // programs
    "app",
    "appex",
    "service",
    "wdgt",
    "xpc",
    // parts of programs and of the system
    "action",
    "bundle",
    "colorpicker",
    "component",
    "kext",
    "mdimporter",
    "plugin",
    "prefpane",
    "qlgenerator",
    "saver",
    "slidesaver",
    // installers and downloads
    "download",
    "mpkg",
    "pkg",
    // documents
    "docset",
    "dsym",
    "nib",
    "playground",
    "rtfd",
    "scptd",
    "sparsebundle",
    "workflow",
    "xcodeproj",
    "xcworkspace",
    // collections of pictures, films and music
    "aplibrary",
    "fcpbundle",
    "imovielibrary",
    "migratedphotolibrary",
    "musiclibrary",
    "photolibrary",
    "photoslibrary",
    "tvlibrary",
};

/// "" when there is none; the dot of a hidden folder begins none.
std::string lowerCaseExtension(const std::string& name) {
    const std::size_t dot = name.rfind('.');
    std::string extension = dot == std::string::npos || dot == 0 ? "" : name.substr(dot + 1);
    for (char& letter : extension)
        if (letter >= 'A' && letter <= 'Z')
            letter = static_cast<char>(letter - 'A' + 'a');
    return extension;
}

bool hasPackageName(std::string path) {
    path.erase(path.find_last_not_of('/') + 1);
    const std::string extension = lowerCaseExtension(nameOf(path));
    return std::find(std::begin(extensions), std::end(extensions), extension) != std::end(extensions);
}

} // namespace

bool isFilePackage(const std::string& path) {
    struct stat status {};
    if (!checkPath(path) || ::stat(path.c_str(), &status) != 0 || !S_ISDIR(status.st_mode))
        return false;
    if (hasPackageName(path))
        return true;
    Result<FinderInfo> information = finderInformation(path);
    return information && (information->flags & bundleFlag) != 0;
}

} // namespace kestrine
