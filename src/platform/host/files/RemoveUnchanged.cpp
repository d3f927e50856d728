#include "platform/host/files/RemoveUnchanged.h"

#include "platform/host/files/ExclusiveRename.h"
#include "platform/host/files/FileContent.h"
#include "platform/host/files/FileMark.h"
#include "platform/host/files/Folders.h"
#include "platform/host/files/PathParts.h"

#include <unistd.h>

namespace kestrine {

namespace {

bool isNotAFile(const Failure& failure) {
    return failure.reason == Reason::notFound || failure.reason == Reason::notRegularFile;
}

/// Removes the item under the private name `aside`. Returns whether it was removed; false if it has another
/// mark.
Result<bool> removeIfMarked(const std::string& aside, const FileMark& mark) {
    if (TRY(markOfItem(aside)) != mark)
        return false;
    TRY(removeFile(aside));
    return true;
}

} // namespace

Result<bool> removeIfContentIs(const std::string& path, const ContentDigest& content,
                               const std::string& aside) {
    const Result<FileMark> mark = markOfFile(path);
    const Result<ContentDigest> found = mark ? digestOfFile(path) : Result<ContentDigest>(mark.failure());
    if (!found && !isNotAFile(found.failure()))
        return found.failure();
    if (!found || *found != content)
        return false;
    const std::string folderPath = folderOf(path);
    const FileDescriptor folder = TRY(openFolder(folderPath));
    const FolderEntry place{folder.number(), nameOf(path)}, hidden{folder.number(), aside};
    if (const int error = setAside(place, hidden); error != 0)
        return systemFailure("cannot remove " + path, error);
    Result<bool> removed = removeIfMarked(joinedPath(folderPath, aside), *mark);
    if (!removed || !*removed)
        (void)putBack(hidden, place);
    return removed;
}

} // namespace kestrine
