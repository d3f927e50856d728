#include "platform/finder/FilePackage.h"

#include "platform/finder/FinderMetadata.h"
#include "platform/foundation/text/NSString.h"
#include "platform/host/files/FileAttributes.h"

#include <algorithm>
#include <string_view>
#include <sys/stat.h>

namespace kestrine {

namespace {

/// The Finder flag that makes a folder a package, whatever its name.
constexpr std::uint16_t bundleFlag = 0x2000;

/// The extensions of packages, in lower case.
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

bool hasPackageName(const std::string& path) {
    const std::string extension = NSString::fromUTF8(path).pathExtension().lowercased().utf8();
    return std::ranges::find(extensions, extension) != std::end(extensions);
}

} // namespace

bool isFilePackage(const std::string& path) {
    const Result<struct stat> status = attributesOf(path, FollowLinks::yes);
    if (!status || !S_ISDIR(status->st_mode))
        return false;
    if (hasPackageName(path))
        return true;
    Result<FinderInfo> information = finderInformation(path);
    return information && (information->flags & bundleFlag) != 0;
}

} // namespace kestrine
