#include "platform/finder/FinderItem.h"

#include "platform/host/FreeDeleter.h"
#include "platform/host/files/Folders.h"
#include "platform/host/files/PathParts.h"

#include <cstdlib>
#include <memory>

namespace kestrine {

bool FinderFolder::isSame(const FinderFolder& other) const { return isSameItem(status, other.status); }

bool FinderFolder::liesInOrIs(const std::string& otherPath) const {
    return joinedPath(path, "").starts_with(joinedPath(otherPath, ""));
}

std::string FinderItem::path() const { return joinedPath(folder.path, name); }

Result<FinderFolder> lookUpFolder(const std::string& path) {
    FileDescriptor descriptor = TRY(openFolder(path));
    const std::unique_ptr<char, FreeDeleter> resolved(::realpath(path.c_str(), nullptr));
    if (!resolved)
        return systemFailure("cannot find " + path);
    FinderFolder folder{std::move(descriptor), resolved.get(), {}};
    if (::fstat(folder.descriptor.number(), &folder.status) != 0)
        return systemFailure("cannot examine " + path);
    return folder;
}

Result<FinderItem> lookUpItem(std::string path) {
    TRY(checkPath(path));
    path.erase(path.find_last_not_of('/') + 1);
    const std::string name = nameOf(path);
    if (name.empty() || name == "." || name == "..")
        return Failure{Reason::refused, "\"/\", \".\" and \"..\" cannot be moved, copied or deleted"};
    FinderFolder folder = TRY(lookUpFolder(folderOf(path)));
    struct stat status = TRY(statusOf(folder.entry(name)));
    return FinderItem{std::move(folder), name, status};
}

} // namespace kestrine
