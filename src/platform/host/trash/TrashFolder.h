// TrashFolder: one trash folder. Its subfolder "files" has the items, and "info" has a record for each of
// them.
#pragma once

#include "platform/host/files/FileDescriptor.h"
#include "platform/host/files/FolderEntry.h"
#include "platform/host/files/NamelessFile.h"

#include <functional>
#include <string>

namespace kestrine {

/// An item in the trash, such as "files/a.jpg" with the record "info/a.jpg.trashinfo".
struct TrashedItem {
    std::string path;     ///< the path in the trash
    std::string infoPath; ///< the path of the record, which holds the original path
};

/// Move-only. Keeps the folders open.
class TrashFolder {
public:
    /// The trash at `path` in the user's home. Missing folders are created with the mode 0700.
    static Result<TrashFolder> openHome(const std::string& path);

    /// The user's trash on the file system mounted at `topFolder`. It is in the folder ".Trash" if the
    /// administrator has created one with the sticky bit, otherwise it is the folder ".Trash-1000" with the
    /// user's number, which is created if needed. Links and folders of other users are not used: refused.
    static Result<TrashFolder> openOnVolume(const std::string& topFolder);

    /// The device on which the items lie.
    dev_t device() const { return device_; }
    /// The open folder "files".
    int files() const { return files_.number(); }

    /// Moves an entry into the trash under a free name derived from `wantedName`, with `info` as its record.
    /// Fails with unsupported if the entry is on another file system. After a failure nothing has changed.
    Result<TrashedItem> moveIn(const FolderEntry& entry, const std::string& wantedName,
                               const std::string& info) const;

    /// Gives a complete file that lies in files() and has no name yet a free name derived from `wantedName`,
    /// with `info` as its record. Fails with unsupported if this system cannot name such files.
    Result<TrashedItem> linkIn(const NamelessFile& file, const std::string& wantedName,
                               const std::string& info) const;

    /// Creates the record of an item that the caller then creates as `name` in files(). Fails with
    /// alreadyExists if the name is in use.
    Result<TrashedItem> announce(const std::string& name, const std::string& info) const;

    /// Records the disk space of an item that is a folder, for programs that show the trash. Errors are
    /// ignored.
    void recordFolderSize(const TrashedItem& item) const;

    /// Writes the names of the items to the disk. Records are there as soon as they exist.
    Result<void> sync() const;

    /// Deletes an item from the trash, if it is there, and its record afterwards. If it cannot be deleted,
    /// the record stays, so that the item can be seen and restored.
    void remove(const TrashedItem& item) const;

private:
    TrashFolder(std::string path, FileDescriptor root) : path_(std::move(path)), root_(std::move(root)) {}
    static Result<TrashFolder> openParts(std::string path, FileDescriptor root);
    static Result<TrashFolder> openOwn(const FolderEntry& entry, const std::string& path);
    using GiveName = std::function<int(const FolderEntry& entry)>;
    Result<TrashedItem> admit(const std::string& wantedName, const std::string& info,
                              const GiveName& giveName) const;
    Result<void> writeInfo(const std::string& name, const std::string& text) const;

    std::string path_;
    FileDescriptor root_, files_, info_;
    dev_t device_ = 0;
};

} // namespace kestrine
