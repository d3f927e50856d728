#include "platform/finder/FinderPath.h"

#include "platform/finder/Volumes.h"
#include "platform/host/files/FileAttributes.h"
#include "platform/host/files/PathParts.h"

#include <algorithm>
#include <sys/stat.h>

namespace kestrine {

namespace {

Failure nothingThere(const NSString& finderPath) {
    return {Reason::notFound, "there is no item " + finderPath.utf8()};
}

Result<std::vector<NSString>> namesOf(const NSString& finderPath) {
    std::vector<NSString> names = finderPath.componentsSeparatedBy(u":");
    if (names.size() > 1 && names.back().isEmpty())
        names.pop_back();
    if (std::any_of(names.begin(), names.end(), [](const NSString& name) { return name.isEmpty(); }))
        return Failure{Reason::malformed, "a name is empty in the Finder path " + finderPath.utf8()};
    return names;
}

/// Whether an item can have that name.
bool isItemName(const std::string& name) {
    return name != "." && name != ".." && name.find_first_of(std::string("/\0", 2)) == std::string::npos;
}

Result<std::string> mountPointOf(const NSString& volumeName, const NSString& finderPath) {
    std::vector<Volume> volumes = TRY(mountedVolumes());
    for (const Volume& volume : volumes)
        if (volume.name == volumeName)
            return volume.mountPoint;
    return nothingThere(finderPath);
}

} // namespace

Result<NSString> finderPathOf(const std::string& path) {
    Result<CatalogEntry> entry = catalogEntry(path);
    NSString text = entry ? entry->name : NSString();
    while (entry && !entry->parent.empty()) {
        entry = catalogEntry(entry->parent);
        if (entry)
            text = entry->name + u":" + text;
    }
    if (!entry)
        return entry.failure();
    return text;
}

Result<std::string> pathOfFinderPath(const NSString& finderPath) {
    std::vector<NSString> names = TRY(namesOf(finderPath));
    Result<std::string> path = mountPointOf(names.front(), finderPath);
    if (!path)
        return path;
    for (auto shown = names.begin() + 1; shown != names.end(); ++shown) {
        const std::string name = withColonsAndSlashesSwapped(*shown).utf8();
        if (!isItemName(name))
            return nothingThere(finderPath);
        path = joinedPath(*path, name);
    }
    if (const Result<struct stat> found = attributesOf(*path, FollowLinks::no); !found)
        return found.failure();
    return path;
}

} // namespace kestrine
