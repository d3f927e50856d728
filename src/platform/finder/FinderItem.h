// FinderItem and FinderFolder: the items of a Finder operation. Their folders are kept open, so that renaming
// a folder during the operation cannot redirect it.
#pragma once

#include "platform/host/files/FileDescriptor.h"
#include "platform/host/files/FolderEntry.h"

#include <string>

namespace kestrine {

/// An existing folder; move-only.
struct FinderFolder {
    FileDescriptor descriptor;
    std::string path; ///< absolute, links resolved
    struct stat status;

    FolderEntry entry(const std::string& name) const { return {descriptor.number(), name}; }
    /// Whether both are the same folder, even if their paths differ.
    bool isSame(const FinderFolder& other) const;
    bool liesInOrIs(const std::string& otherPath) const;
};

/// A file, folder or link in its folder; move-only.
struct FinderItem {
    FinderFolder folder;
    std::string name;
    struct stat status;

    std::string path() const;
    FolderEntry entry() const { return folder.entry(name); }
    bool isFolder() const { return S_ISDIR(status.st_mode); }
};

/// Follows links. notFound when there is no folder.
Result<FinderFolder> lookUpFolder(const std::string& path);

/// Does not follow a link at the end of the path. refused for "/", "." and "..".
Result<FinderItem> lookUpItem(std::string path);

} // namespace kestrine
