#include "platform/host/trash/Trash.h"

#include "platform/host/FreeDeleter.h"
#include "platform/host/files/Folders.h"
#include "platform/host/files/MountPoints.h"
#include "platform/host/files/PathParts.h"
#include "platform/host/files/TreeCopy.h"
#include "platform/host/trash/TrashInfo.h"

#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <memory>

namespace kestrine {

namespace {

/// What is to be thrown away.
struct Candidate {
    FileDescriptor folder;  ///< that holds it
    std::string folderPath; ///< absolute, without links
    std::string name;
    struct stat status;

    std::string path() const { return joinedPath(folderPath, name); }
    FolderEntry entry() const { return {folder.number(), name}; }
    bool isFolder() const { return S_ISDIR(status.st_mode); }
};

Failure refusal(const std::string& why) { return {Reason::refused, why}; }

/// Links resolved as far as the path exists; "" for a path that names nothing.
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
        return refusal("there is no such name");
    path.erase(path.find_last_not_of('/') + 1);
    const std::string name = nameOf(path);
    if (name.empty() || name == "." || name == "..")
        return refusal("this name stands for a folder that must stay");
    FileDescriptor folder = TRY(openFolder(folderOf(path)));
    struct stat status = TRY(statusOf({folder.number(), name}));
    const std::unique_ptr<char, FreeDeleter> folderPath(::realpath(folderOf(path).c_str(), nullptr));
    if (!folderPath)
        return systemFailure("cannot find " + folderOf(path));
    return Candidate{std::move(folder), folderPath.get(), name, status};
}

/// Whether a path below a top folder begins with ".Trash" or ".Trash-1000".
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

Result<void> checkAllowed(const Candidate& item, const std::string& home, const std::string& homeTrash) {
    const std::string path = item.path();
    if (isMountPoint(item.entry()))
        return refusal("a file system is mounted there");
    if (item.isFolder() && hasMountPointBelow(path))
        return refusal("a file system is mounted in it");
    if (path == home || liesIn(home, path))
        return refusal("it is the home folder or holds it");
    // An empty argument of a script would otherwise throw away the folder the script works in.
    const std::string currentFolder = resolved(".");
    if (path == currentFolder || liesIn(currentFolder, path))
        return refusal("it is the current folder or holds it");
    if (path == homeTrash || liesIn(homeTrash, path) || liesIn(path, homeTrash)
        || isVolumeTrash(pathBelow(path, topFolderOf(item.folderPath))))
        return refusal("it lies in the trash or holds it");
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

Result<TrashedItem> moveIntoVolumeTrash(const Candidate& item) {
    const std::string top = topFolderOf(item.folderPath);
    TrashFolder trash = TRY(TrashFolder::openOnVolume(top));
    return moveInto(trash, item, pathBelow(item.path(), top));
}

/// Gives a finished copy its name in the trash, on the disk for good.
Result<TrashedItem> admitCopy(const TrashFolder& trash, const FolderEntry& copy, const Candidate& item) {
    Result<TrashedItem> moved = trash.moveIn(copy, item.name, trashInfoText(item.path(), std::time(nullptr)));
    if (!moved) {
        removeTree(copy);
        return moved;
    }
    if (Result<void> synced = trash.sync(); !synced) {
        trash.remove(*moved);
        return synced.failure();
    }
    return moved;
}

Result<TrashedItem> copyIntoTrash(const TrashFolder& trash, const Candidate& item) {
    const FolderEntry copy{trash.files(), temporaryName()};
    CopiedItem copied = TRY(copyTree(item.entry(), copy));
    TrashedItem admitted = TRY(admitCopy(trash, copy, item));
    bool anythingRemoved = false;
    Result<void> removed = checkUnchanged(item.folder.number(), copied);
    if (removed)
        removed = removeOriginal(item.folder.number(), copied, anythingRemoved);
    if (!removed && !anythingRemoved) {
        trash.remove(admitted);
        return removed.failure();
    }
    if (item.isFolder())
        trash.recordFolderSize(admitted);
    TRY(removed);
    return admitted;
}

} // namespace

Result<TrashedItem> moveToTrash(const std::string& path, const Environment& environment) {
    Candidate item = TRY(examine(path));
    const std::string dataHome = environment.xdgDataHome();
    const std::string homeTrash = dataHome.empty() ? "" : joinedPath(dataHome, "Trash");
    TRY(checkAllowed(item, resolved(environment.homeFolder()), resolved(homeTrash)));
    Result<TrashFolder> home = TrashFolder::openHome(homeTrash);
    struct stat folder {};
    const bool isNearHome =
        home && ::fstat(item.folder.number(), &folder) == 0 && folder.st_dev == home->device();
    if (isNearHome) {
        Result<TrashedItem> moved = moveInto(*home, item, item.path());
        // Unsupported: the home's device mounted in a second place, where nothing can be moved from.
        if (moved || moved.failure().reason != Reason::unsupported)
            return moved;
    }
    if (Result<TrashedItem> moved = moveIntoVolumeTrash(item))
        return moved;
    return copyIntoTrash(TRY(std::move(home)), item);
}

} // namespace kestrine
