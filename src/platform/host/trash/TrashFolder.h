// TrashFolder: one trash on one file system, with its parts "files" (what was thrown away) and "info" (where
// it was).
#pragma once

#include "platform/host/files/FileDescriptor.h"
#include "platform/host/files/FolderEntry.h"

#include <string>

namespace kestrine {

/// Something in a trash. Both names end alike: "files/a.jpg" and "info/a.jpg.trashinfo".
struct TrashedItem {
    std::string path;     ///< where it is now
    std::string infoPath; ///< the record of where it was
};

/// Move-only; holds the folders open.
class TrashFolder {
public:
    /// The user's own trash at `path`; what is missing is made, for the user alone.
    static Result<TrashFolder> openHome(const std::string& path);

    /// The user's trash on the file system mounted at `topFolder`: in the trash that the administrator
    /// prepared for all users (".Trash"), or else in one of the user's own (".Trash-1000"), which is made.
    /// A folder of either name that others could have put there is refused.
    static Result<TrashFolder> openOnVolume(const std::string& topFolder);

    /// The device on which the items lie.
    dev_t device() const { return device_; }
    /// The open folder of the items.
    int files() const { return files_.number(); }

    /// Moves an entry into the trash under a free name made from `wantedName`, with the record `info`.
    /// Fails with unsupported when a move into this trash crosses file systems; after any failure the
    /// entry is where it was and the trash is as it was.
    Result<TrashedItem> moveIn(const FolderEntry& entry, const std::string& wantedName,
                               const std::string& info) const;

    /// Notes in the trash how much room an item that is a folder takes. Only a service to programs that
    /// show it: a failure is of no consequence.
    void recordFolderSize(const TrashedItem& item) const;

    /// Brings the trash's names to the disk.
    Result<void> sync() const;

    /// Takes an item out of the trash for good, its record last.
    void remove(const TrashedItem& item) const;

private:
    TrashFolder(std::string path, FileDescriptor root) : path_(std::move(path)), root_(std::move(root)) {}
    static Result<TrashFolder> openParts(std::string path, FileDescriptor root);
    static Result<TrashFolder> openOwn(const FolderEntry& entry, const std::string& path);
    Result<void> writeInfo(const std::string& name, const std::string& text) const;

    std::string path_;
    FileDescriptor root_, files_, info_;
    dev_t device_ = 0;
};

} // namespace kestrine
