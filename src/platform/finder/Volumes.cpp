#include "platform/finder/Volumes.h"

#include "platform/host/files/FileAttributes.h"
#include "platform/host/files/Folders.h"
#include "platform/host/files/MountPoints.h"
#include "platform/host/files/PathParts.h"

#include <cstdlib>
#include <memory>
#include <set>
#include <sys/stat.h>

namespace kestrine {

namespace {

/// The names that no folder gives.
constexpr const char* startUpVolumeName = "System";
constexpr const char16_t* nameAboveTheVolumes = u"Computer";

/// In bytes, which are never fewer than the UTF-16 units of the same text.
constexpr std::size_t longestVolumeName = 255;

/// A part of a file system that is mounted in a second place may be a single file, which is an item like any
/// other. Only those are looked at: examining a dead network disk would take forever.
bool isVolume(const MountPoint& point) {
    struct stat status {};
    return point.path != "/"
           && (point.showsWhole || ::stat(point.path.c_str(), &status) != 0 || S_ISDIR(status.st_mode));
}

/// Finds each volume the name that its folder suggests, or the next one with a number.
class VolumeNames {
public:
    NSString next(const std::string& wanted) {
        NSString name = shown(wanted);
        for (unsigned number = 1; !taken_.insert(name).second; ++number)
            name = shown(nameWithAddition(wanted, " " + std::to_string(number), longestVolumeName));
        return name;
    }

private:
    static NSString shown(const std::string& name) {
        return withColonsAndSlashesSwapped(NSString::fromUTF8(name));
    }

    std::set<NSString> taken_;
};

Failure refusal() { return {Reason::refused, "nothing holds the level above the volumes"}; }

Result<std::string> withoutLinks(const std::string& path) {
    const std::unique_ptr<char, void (*)(void*)> resolved(::realpath(path.c_str(), nullptr), std::free);
    if (!resolved)
        return systemFailure("cannot find " + path);
    return std::string(resolved.get());
}

/// The path of an existing item; only its last name may be a link.
Result<std::string> locate(std::string path) {
    TRY(checkPath(path));
    path.erase(path.find_last_not_of('/') + 1);
    const std::string name = nameOf(path);
    if (name.empty() || name == "." || name == "..")
        return withoutLinks(path + "/");
    std::string folder = TRY(withoutLinks(folderOf(path)));
    std::string located = joinedPath(folder, name);
    if (const Result<struct stat> found = attributesOf(located, FollowLinks::no); !found)
        return found.failure();
    return located;
}

/// Spares most items the table of mounts, which may be long. True also where the system does not tell.
bool canBeVolume(const std::string& located) {
    if (located == "/")
        return true;
    const Result<FileDescriptor> folder = openFolder(folderOf(located));
    return !folder || isMountPoint({folder->number(), nameOf(located)});
}

} // namespace

NSString withColonsAndSlashesSwapped(const NSString& name) {
    std::u16string text = name.utf16();
    for (char16_t& unit : text)
        unit = unit == u':' ? u'/' : unit == u'/' ? u':' : unit;
    return text;
}

Result<std::vector<Volume>> mountedVolumes() {
    Result<std::vector<MountPoint>> points = mountPoints();
    if (!points && points.failure().reason != Reason::notFound)
        return points.failure();
    VolumeNames names;
    std::vector<Volume> volumes{{"/", names.next(startUpVolumeName)}};
    std::set<std::string> seen;
    for (const MountPoint& point : points ? *points : std::vector<MountPoint>())
        if (isVolume(point) && seen.insert(point.path).second)
            volumes.push_back({point.path, names.next(nameOf(point.path))});
    return volumes;
}

NSString topLevelName() { return nameAboveTheVolumes; }

Result<CatalogEntry> catalogEntry(const std::string& path) {
    if (path.empty())
        return refusal();
    std::string located = TRY(locate(path));
    const CatalogEntry item{withColonsAndSlashesSwapped(NSString::fromUTF8(nameOf(located))),
                            folderOf(located)};
    if (!canBeVolume(located))
        return item;
    std::vector<Volume> volumes = TRY(mountedVolumes());
    for (const Volume& volume : volumes)
        if (volume.mountPoint == located)
            return CatalogEntry{volume.name, ""};
    return item;
}

} // namespace kestrine
