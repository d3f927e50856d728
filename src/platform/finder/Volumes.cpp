#include "platform/finder/Volumes.h"

#include "platform/host/FreeDeleter.h"
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

constexpr const char* startUpVolumeName = "System";
constexpr const char16_t* topLevel = u"Computer";

/// The limit in bytes. UTF-8 never has fewer bytes than UTF-16 has code units, so this also limits the
/// latter.
constexpr std::size_t maxVolumeNameSize = 255;

/// A bind mount can be a single file, which is not a volume. Only bind mounts are examined, because stat()
/// can block forever on an unreachable network disk.
bool isVolume(const MountPoint& point) {
    struct stat status {};
    return point.path != "/"
           && (point.showsWhole || ::stat(point.path.c_str(), &status) != 0 || S_ISDIR(status.st_mode));
}

/// Gives each volume the name of its folder, with a number when the name is taken.
class VolumeNames {
public:
    NSString next(const std::string& wanted) {
        NSString name = shown(wanted);
        for (unsigned number = 1; !taken_.insert(name).second; ++number)
            name = shown(nameWithAddition(wanted, " " + std::to_string(number), maxVolumeNameSize));
        return name;
    }

private:
    static NSString shown(const std::string& name) {
        return withColonsAndSlashesSwapped(NSString::fromUTF8(name));
    }

    std::set<NSString> taken_;
};

Failure refusal() { return {Reason::refused, "the top level has no parent"}; }

Result<std::string> withoutLinks(const std::string& path) {
    const std::unique_ptr<char, FreeDeleter> resolved(::realpath(path.c_str(), nullptr));
    if (!resolved)
        return systemFailure("cannot find " + path);
    return std::string(resolved.get());
}

/// The path of an existing item with all links resolved, except one at its end.
Result<std::string> locate(std::string path) {
    TRY(checkPath(path));
    path.erase(path.find_last_not_of('/') + 1);
    const std::string name = nameOf(path);
    if (name.empty() || name == "." || name == "..")
        return withoutLinks(path + "/");
    std::string folder = TRY(withoutLinks(folderOf(path)));
    std::string located = joinedPath(folder, name);
    TRY(attributesOf(located, FollowLinks::no));
    return located;
}

/// Avoids reading the table of mounts, which can be long, for most items. True when it cannot be determined.
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

NSString topLevelName() { return topLevel; }

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
