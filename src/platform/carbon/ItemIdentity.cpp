#include "platform/carbon/ItemIdentity.h"

#include "platform/host/files/FileAttributes.h"
#include "platform/host/files/Folders.h"

namespace kestrine {
namespace {

Result<ItemIdentity> identityIn(const Result<struct stat>& status) {
    if (!status)
        return status.failure();
    return ItemIdentity{status->st_dev, status->st_ino};
}

} // namespace

Result<ItemIdentity> identityOf(const std::string& path) {
    return identityIn(attributesOf(path, FollowLinks::no));
}

Result<std::string> nameOfItem(const std::string& folder, const ItemIdentity& identity) {
    const FileDescriptor opened = TRY(openFolder(folder));
    const std::vector<std::string> names = TRY(namesIn(opened.number()));
    for (const std::string& name : names) {
        const Result<ItemIdentity> found = identityIn(statusOf({opened.number(), name}));
        if (found && *found == identity)
            return name;
    }
    return Failure{Reason::notFound, "the item is not in " + folder};
}

} // namespace kestrine
