// Folders: making, comparing, measuring, and commands that work on them.
#include "_MyClasses/Category/FileManagerUtility.h"
#include "_MyClasses/Category/FolderCommands.h"
#include "_MyClasses/Category/StringUtility.h"
#include "platform/appkit/NSWorkspace.h"

namespace kestrine {

namespace myUtility {

namespace {

bool isMissing(const NSFileManager& manager, const OptionalString& path) {
    return !path || !manager.fileExistsAtPath(*path);
}

/// 0 when nothing is there.
std::uint64_t ownSize(const NSFileManager& manager, const NSString& path) {
    const std::optional<NSFileAttributes> attributes = manager.fileAttributesAtPath(path, false);
    return attributes ? attributes->fileSize : 0;
}

} // namespace

void makeFoldersToPath(NSFileManager& manager, const NSString& path) {
    if (manager.fileExistsAtPath(path))
        return;
    const std::vector<NSString> components = path.pathComponents();
    if (components.size() < 2)
        return;
    NSString current = components.front();
    for (std::size_t i = 1; i < components.size(); ++i) {
        current = current.appendingPathComponent(components[i]);
        if (!manager.fileExistsAtPath(current))
            manager.createDirectoryAtPath(current);
    }
}

bool fileIsDirectory(const NSFileManager& manager, const OptionalString& path) {
    if (!path)
        return false;
    bool isDirectory = false;
    manager.fileExistsAtPath(*path, isDirectory);
    if (!isDirectory)
        return false;
    return !NSWorkspace::shared().isFilePackageAtPath(*path)
           || path->lastPathComponent() == u"iPhoto Library";
}

int compareModificationDate(const NSFileManager& manager, const OptionalString& first,
                            const OptionalString& second) {
    if (isMissing(manager, first))
        return 0;
    if (isMissing(manager, second))
        return 1;
    const std::optional<NSFileAttributes> ofFirst = manager.fileAttributesAtPath(*first, false);
    const std::optional<NSFileAttributes> ofSecond = manager.fileAttributesAtPath(*second, false);
    if (!ofFirst || !ofSecond)
        return ofFirst ? 1 : 0; // removed since the check above
    return ofFirst->fileModificationDate.compare(ofSecond->fileModificationDate);
}

void changeFileNameOfPath(NSFileManager&, const NSString& path, const NSString& newName) {
    runQuietly(renamingCommand(path, newName));
}

void copyFolderAndContentsFrom(NSFileManager&, const NSString& source, const NSString& destination) {
    runQuietly(copyingCommand(source, destination));
}

void removeFolder(NSFileManager&, const NSString& path) { runQuietly(removingCommand(path)); }

bool unarchiveFile(NSFileManager& manager, const NSString& archive, const NSString& folder) {
    if (!manager.fileExistsAtPath(archive) || !manager.fileExistsAtPath(folder))
        return false;
    runQuietly(unarchivingCommand(archive, folder));
    return true;
}

std::uint64_t calcSizeOfDirectory(NSFileManager& manager, const NSString& path) {
    const std::optional<NSFileAttributes> attributes = manager.fileAttributesAtPath(path, false);
    if (!attributes)
        return 0;
    if (!attributes->fileType.isSame(NSFileTypeDirectory()))
        return attributes->fileSize;
    const std::vector<NSString> subpaths = manager.subpathsAtPath(path);
    if (!manager.changeCurrentDirectoryPath(path))
        return 0; // the relative paths would lead to another folder
    std::uint64_t size = 0;
    for (const NSString& subpath : subpaths)
        size += ownSize(manager, subpath);
    return size;
}

} // namespace myUtility

namespace {

/// The name after "/Volumes/", else the first folder's name.
OptionalString volumeNameIn(const NSString& path) {
    const NSString expanded = path.expandingTildeInPath();
    const OptionalString name =
        StringUtility::substringFrom(expanded, OptionalString(u"/Volumes/"), NSString(u"/"));
    return name ? name : StringUtility::substringFrom(expanded, OptionalString(u"/"), NSString(u"/"));
}

} // namespace

bool isSameVolumePath(const NSString& first, const NSString& second) {
    const OptionalString name = volumeNameIn(first);
    return name && name == volumeNameIn(second);
}

bool isSubdirectory(const NSString& folder, const NSString& candidate) {
    if (folder.isEmpty() || folder == candidate)
        return false;
    return candidate.utf16().starts_with(folder.utf16());
}

} // namespace kestrine
