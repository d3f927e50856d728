#include "platform/finder/FinderItem.h"

#include "platform/host/files/Folders.h"
#include "platform/host/files/PathParts.h"

#include <cstdlib>
#include <memory>

namespace kestrine {

bool FinderFolder::isSame(const FinderFolder& other) const {
    return status.st_dev == other.status.st_dev && status.st_ino == other.status.st_ino;
}

bool FinderFolder::liesInOrIs(const std::string& otherPath) const {
    return joinedPath(path, "").starts_with(joinedPath(otherPath, ""));
}

std::string FinderItem::path() const { return joinedPath(folder.path, name); }

Result<FinderFolder> lookUpFolder(const std::string& path) {
    Result<FileDescriptor> descriptor = openFolder(path);
    if (!descriptor)
        return descriptor.failure();
    const std::unique_ptr<char, void (*)(void*)> resolved(::realpath(path.c_str(), nullptr), std::free);
    if (!resolved)
        return systemFailure("cannot find " + path);
    FinderFolder folder{*std::move(descriptor), resolved.get(), {}};
    if (::fstat(folder.descriptor.number(), &folder.status) != 0)
        return systemFailure("cannot examine " + path);
    return folder;
}

Result<FinderItem> lookUpItem(std::string path) {
    if (Result<void> usable = checkPath(path); !usable)
        return usable.failure();
    path.erase(path.find_last_not_of('/') + 1);
    const std::string name = nameOf(path);
    if (name.empty() || name == "." || name == "..")
        return Failure{Reason::refused, "this name stands for a folder that must stay"};
    Result<FinderFolder> folder = lookUpFolder(folderOf(path));
    if (!folder)
        return folder.failure();
    Result<struct stat> status = statusOf(folder->entry(name));
    if (!status)
        return status.failure();
    return FinderItem{*std::move(folder), name, *status};
}

} // namespace kestrine
