// FinderItem and FinderFolder: what the Finder was asked to handle, looked up and held by open folders, so
// that renaming a folder meanwhile cannot lead an operation elsewhere.
#pragma once

#include "platform/host/files/FileDescriptor.h"
#include "platform/host/files/FolderEntry.h"

#include <string>

namespace kestrine {

/// An existing folder; move-only.
struct FinderFolder {
    FileDescriptor descriptor;
    std::string path; ///< absolute, without links
    struct stat status;

    FolderEntry entry(const std::string& name) const { return {descriptor.number(), name}; }
    /// Whether both are the same folder, be it by another path.
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

/// Links are followed. notFound when nothing is there or it is no folder.
Result<FinderFolder> lookUpFolder(const std::string& path);

/// A link is an item itself. refused for the names that stand for a folder as a whole: "/", "." and "..".
Result<FinderItem> lookUpItem(std::string path);

} // namespace kestrine
