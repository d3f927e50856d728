#include "platform/carbon/ItemIdentity.h"

#include "platform/host/Folders.h"
#include "platform/host/PathParts.h"

namespace kestrine {
namespace {

Result<ItemIdentity> identityOf(const FolderEntry& entry) {
    const Result<struct stat> status = statusOf(entry);
    if (!status)
        return status.failure();
    return ItemIdentity{status->st_dev, status->st_ino};
}

} // namespace

Result<ItemIdentity> identityOf(const std::string& path) {
    const Result<FileDescriptor> folder = openFolder(folderOf(path));
    if (!folder)
        return folder.failure();
    const std::string name = nameOf(path);
    return identityOf(FolderEntry{folder->number(), name.empty() ? "." : name});
}

Result<std::string> nameOfItem(const std::string& folder, const ItemIdentity& identity) {
    const Result<FileDescriptor> opened = openFolder(folder);
    if (!opened)
        return opened.failure();
    const Result<std::vector<std::string>> names = namesIn(opened->number());
    if (!names)
        return names.failure();
    for (const std::string& name : *names) {
        const Result<ItemIdentity> found = identityOf(FolderEntry{opened->number(), name});
        if (found && *found == identity)
            return name;
    }
    return Failure{Reason::notFound, "no item of that number is in " + folder};
}

} // namespace kestrine
