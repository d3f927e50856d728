#include "platform/carbon/CFURL.h"

#include "platform/carbon/CatalogNode.h"
#include "platform/carbon/PathBytes.h"
#include "platform/finder/FinderPath.h"
#include "platform/host/files/FileAttributes.h"

namespace kestrine {
namespace {

const std::uint8_t* bytesOf(const std::string& path) {
    return reinterpret_cast<const std::uint8_t*>(path.c_str());
}

} // namespace

CFURLRef CFURLCreateWithFileSystemPath(const OptionalString& path, CFURLPathStyle style, bool isDirectory) {
    std::optional<std::string> bytes;
    if (style == kCFURLPOSIXPathStyle) {
        bytes = pathBytesOf(path);
    } else if (path) {
        Result<std::string> found = pathOfFinderPath(*path);
        if (found)
            bytes = *std::move(found);
    }
    if (!bytes || bytes->empty())
        return nullptr;
    return std::make_shared<const CFURL>(*std::move(bytes), isDirectory);
}

CFURLRef CFURLCreateFromFSRef(const FSRef* reference) {
    if (reference == nullptr || reference->node == nullptr)
        return nullptr;
    const std::string& path = reference->node->path();
    const Result<struct stat> status = attributesOf(path, FollowLinks::no);
    if (!status)
        return nullptr;
    return std::make_shared<const CFURL>(path, S_ISDIR(status->st_mode));
}

bool CFURLGetFSRef(const CFURLRef& url, FSRef* reference) {
    return url != nullptr && FSPathMakeRef(bytesOf(url->path()), reference, nullptr) == noErr;
}

bool CFURLHasDirectoryPath(const CFURLRef& url) { return url != nullptr && url->isDirectory(); }

OptionalString CFURLCopyFileSystemPath(const CFURLRef& url, CFURLPathStyle style) {
    if (url == nullptr)
        return std::nullopt;
    if (style == kCFURLPOSIXPathStyle)
        return NSString::fromUTF8(url->path());
    FSRef reference;
    if (!CFURLGetFSRef(url, &reference))
        return std::nullopt;
    const Result<NSString> path = finderPathOf(reference.node->path());
    if (!path)
        return std::nullopt;
    return *path;
}

} // namespace kestrine
