#include "platform/host/trash/Trash.h"

#include "platform/host/FreeDeleter.h"
#include "platform/host/files/Folders.h"
#include "platform/host/files/MountPoints.h"
#include "platform/host/files/PathParts.h"
#include "platform/host/files/TreeCopy.h"
#include "platform/host/trash/TrashCopy.h"
#include "platform/host/trash/TrashInfo.h"

#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <memory>

namespace kestrine {

namespace {

/// The item to move to the trash.
struct Candidate {
    FileDescriptor folder;  ///< the folder of the item
    std::string folderPath; ///< absolute, without links
    std::string name;
    struct stat status;

    std::string path() const { return joinedPath(folderPath, name); }
    FolderEntry entry() const { return {folder.number(), name}; }
    bool isFolder() const { return S_ISDIR(status.st_mode); }
};

Failure refusal(const std::string& why) { return {Reason::refused, why}; }

/// `path` with the links resolved in the part that exists; "" for an empty path.
std::string resolved(const std::string& path) {
    std::error_code error;
    const std::string text = path.empty() ? "" : std::filesystem::weakly_canonical(path, error).string();
    return error ? path : text;
}

bool liesIn(const std::string& path, const std::string& inFolder) {
    return !inFolder.empty() && path.starts_with(joinedPath(inFolder, ""));
}

Result<Candidate> examine(std::string path) {
    if (!checkPath(path))
        return refusal("the path is empty or contains a zero byte");
    path.erase(path.find_last_not_of('/') + 1);
    const std::string name = nameOf(path);
    if (name.empty() || name == "." || name == "..")
        return refusal("this name refers to a folder that must stay");
    FileDescriptor folder = TRY(openFolder(folderOf(path)));
    struct stat status = TRY(statusOf({folder.number(), name}));
    const std::unique_ptr<char, FreeDeleter> folderPath(::realpath(folderOf(path).c_str(), nullptr));
    if (!folderPath)
        return systemFailure("cannot find " + folderOf(path));
    return Candidate{std::move(folder), folderPath.get(), name, status};
}

/// Whether `relativePath`, which is relative to the top folder of a file system, starts with ".Trash" or
/// ".Trash-" and a user number.
bool isVolumeTrash(const std::string& relativePath) {
    constexpr std::string_view shared = ".Trash", ofUser = ".Trash-";
    const std::string first = relativePath.substr(0, relativePath.find('/'));
    return first == shared
           || (first.starts_with(ofUser) && first.size() > ofUser.size()
               && first.find_first_not_of("0123456789", ofUser.size()) == std::string::npos);
}

std::string pathBelow(const std::string& path, const std::string& topFolder) {
    return path.substr(joinedPath(topFolder, "").size());
}

Result<void> checkAllowed(const Candidate& item, const std::string& top, const std::string& home,
                          const std::string& homeTrash) {
    const std::string path = item.path();
    if (isMountPoint(item.entry()))
        return refusal("it is a mount point");
    if (item.isFolder() && hasMountPointBelow(path))
        return refusal("it contains a mount point");
    if (path == home || liesIn(home, path))
        return refusal("it is the home folder or contains it");
    // Protects the current folder of a script that passes an empty variable as part of a path.
    const std::string currentFolder = resolved(".");
    if (path == currentFolder || liesIn(currentFolder, path))
        return refusal("it is the current folder or contains it");
    if (path == homeTrash || liesIn(homeTrash, path) || liesIn(path, homeTrash)
        || isVolumeTrash(pathBelow(path, top)))
        return refusal("it is in the trash or contains the trash");
    return checkRemovable(item.folder.number(), item.status);
}

Result<TrashedItem> moveInto(const TrashFolder& trash, const Candidate& item,
                             const std::string& recordedPath) {
    Result<TrashedItem> moved =
        trash.moveIn(item.entry(), item.name, trashInfoText(recordedPath, std::time(nullptr)));
    if (moved && item.isFolder())
        trash.recordFolderSize(*moved);
    return moved;
}

Result<TrashedItem> moveIntoVolumeTrash(const Candidate& item, const std::string& top) {
    TrashFolder trash = TRY(TrashFolder::openOnVolume(top));
    return moveInto(trash, item, pathBelow(item.path(), top));
}

Result<TrashedItem> copyIntoTrash(const TrashFolder& trash, const Candidate& item) {
    AdmittedCopy copy = TRY(copyIn(trash, item.entry(), item.path()));
    const int folder = item.folder.number();
    bool anythingRemoved = false;
    Result<void> removed = checkUnchanged(folder, copy.original);
    if (removed)
        removed = removeOriginal(folder, copy.original, anythingRemoved);
    if (!removed && !anythingRemoved) {
        trash.remove(copy.item);
        return removed.failure();
    }
    if (item.isFolder())
        trash.recordFolderSize(copy.item);
    TRY(removed);
    return copy.item;
}

} // namespace

Result<TrashedItem> moveToTrash(const std::string& path, const Environment& environment) {
    Candidate item = TRY(examine(path));
    const std::string dataHome = environment.xdgDataHome();
    const std::string homeTrash = dataHome.empty() ? "" : joinedPath(dataHome, "Trash");
    const std::string top = TRY(topFolderOf(item.folderPath));
    TRY(checkAllowed(item, top, resolved(environment.homeFolder()), resolved(homeTrash)));
    Result<TrashFolder> home = TrashFolder::openHome(homeTrash);
    struct stat folder {};
    const bool isNearHome =
        home && ::fstat(item.folder.number(), &folder) == 0 && folder.st_dev == home->device();
    if (isNearHome) {
        Result<TrashedItem> moved = moveInto(*home, item, item.path());
        // Unsupported: the item is on a second mount of the home device, from which nothing can be moved.
        if (moved || moved.failure().reason != Reason::unsupported)
            return moved;
    }
    if (Result<TrashedItem> moved = moveIntoVolumeTrash(item, top))
        return moved;
    return copyIntoTrash(TRY(std::move(home)), item);
}

} // namespace kestrine
