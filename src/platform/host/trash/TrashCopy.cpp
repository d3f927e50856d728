#include "platform/host/trash/TrashCopy.h"

#include "platform/host/files/FileCopy.h"
#include "platform/host/files/PathParts.h"
#include "platform/host/trash/TrashInfo.h"

#include <ctime>
#include <fcntl.h>

namespace kestrine {

namespace {

std::string recordOf(const std::string& path) { return trashInfoText(path, std::time(nullptr)); }

/// Fails with unsupported if this system has no nameless files.
Result<AdmittedCopy> copyNameless(const TrashFolder& trash, const FolderEntry& entry,
                                  const struct stat& status, const std::string& path) {
    NamelessFile copy = TRY(NamelessFile::create(trash.files(), O_RDWR, 0600, "the trash"));
    if (Result<void> filled = fillCopy(entry, copy.descriptor(), status); !filled)
        return filled.failure();
    TrashedItem item = TRY(trash.linkIn(copy, entry.name, recordOf(path)));
    return AdmittedCopy{item, {entry.name, status, {}}};
}

/// The record of the incomplete copy gives it a place of its own beside the original, so that restoring it
/// could not replace the original.
Result<AdmittedCopy> copyNamed(const TrashFolder& trash, const FolderEntry& entry, const std::string& path) {
    const FolderEntry copy{trash.files(), temporaryName()};
    const TrashedItem incomplete =
        TRY(trash.announce(copy.name, recordOf(joinedPath(folderOf(path), copy.name))));
    Result<CopiedItem> original = copyTree(entry, copy);
    Result<TrashedItem> item = original ? trash.moveIn(copy, entry.name, recordOf(path)) : original.failure();
    trash.remove(incomplete);
    return AdmittedCopy{TRY(item), *original};
}

Result<AdmittedCopy> copyUnsynced(const TrashFolder& trash, const FolderEntry& entry,
                                  const std::string& path) {
    struct stat status = TRY(statusOf(entry));
    if (S_ISREG(status.st_mode)) {
        Result<AdmittedCopy> copy = copyNameless(trash, entry, status, path);
        if (copy || copy.failure().reason != Reason::unsupported)
            return copy;
    }
    return copyNamed(trash, entry, path);
}

} // namespace

Result<AdmittedCopy> copyIn(const TrashFolder& trash, const FolderEntry& entry, const std::string& path) {
    AdmittedCopy copy = TRY(copyUnsynced(trash, entry, path));
    if (Result<void> synced = trash.sync(); !synced) {
        trash.remove(copy.item);
        return synced.failure();
    }
    return copy;
}

} // namespace kestrine
