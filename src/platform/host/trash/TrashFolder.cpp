#include "platform/host/trash/TrashFolder.h"

#include "platform/host/StringBytes.h"
#include "platform/host/files/ExclusiveRename.h"
#include "platform/host/files/FileContent.h"
#include "platform/host/files/Folders.h"
#include "platform/host/files/PathParts.h"
#include "platform/host/files/TreeCopy.h"
#include "platform/host/trash/TrashInfo.h"
#include "platform/host/trash/TrashSizes.h"

#include <cerrno>
#include <fcntl.h>
#include <string_view>
#include <unistd.h>

namespace kestrine {

namespace {

constexpr std::string_view infoEnding = ".trashinfo";

/// Opens a folder. Creates it with the mode 0700 if it is missing, and syncs that.
Result<FileDescriptor> openOrMake(const FolderEntry& entry) {
    if (::mkdirat(entry.folder, entry.name.c_str(), 0700) == 0)
        TRY(syncFolder(entry.folder));
    else if (errno != EEXIST)
        return systemFailure("cannot create the folder " + entry.name);
    return openSubfolder(entry);
}

} // namespace

Result<TrashFolder> TrashFolder::openHome(const std::string& path) {
    TRY(makePrivateFolders(path));
    FileDescriptor root = TRY(openFolder(path));
    return openParts(path, std::move(root));
}

Result<TrashFolder> TrashFolder::openOnVolume(const std::string& topFolder) {
    FileDescriptor top = TRY(openFolder(topFolder));
    const std::string user = std::to_string(::geteuid());
    struct stat status {};
    Result<FileDescriptor> shared = openSubfolder({top.number(), ".Trash"});
    if (shared && ::fstat(shared->number(), &status) == 0 && (status.st_mode & S_ISVTX) != 0) {
        Result<TrashFolder> trash =
            openOwn({shared->number(), user}, joinedPath(joinedPath(topFolder, ".Trash"), user));
        if (trash)
            return trash;
    }
    const std::string name = ".Trash-" + user;
    return openOwn({top.number(), name}, joinedPath(topFolder, name));
}

/// Checks the owner of a new folder too, because some file systems give all files to the same user.
Result<TrashFolder> TrashFolder::openOwn(const FolderEntry& entry, const std::string& path) {
    const bool isNew = ::mkdirat(entry.folder, entry.name.c_str(), 0700) == 0;
    FileDescriptor root = TRY(openSubfolder(entry));
    struct stat status {};
    if (::fstat(root.number(), &status) != 0)
        return systemFailure("cannot examine " + path);
    if (status.st_uid == ::geteuid()) {
        if (isNew)
            TRY(syncFolder(entry.folder));
        return openParts(path, std::move(root));
    }
    if (isNew)
        ::unlinkat(entry.folder, entry.name.c_str(), AT_REMOVEDIR);
    return Failure{Reason::refused, path + " belongs to another user"};
}

Result<TrashFolder> TrashFolder::openParts(std::string path, FileDescriptor root) {
    TrashFolder trash(std::move(path), std::move(root));
    FileDescriptor files = TRY(openOrMake({trash.root_.number(), "files"}));
    FileDescriptor info = TRY(openOrMake({trash.root_.number(), "info"}));
    struct stat status {};
    if (::fstat(files.number(), &status) != 0)
        return systemFailure("cannot examine the trash");
    trash.files_ = std::move(files);
    trash.info_ = std::move(info);
    trash.device_ = status.st_dev;
    return trash;
}

/// The record and its name are synced, because without them the item could not be restored after a power
/// failure.
Result<void> TrashFolder::writeInfo(const std::string& name, const std::string& text) const {
    const FileDescriptor file(
        ::openat(info_.number(), name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600));
    if (!file.isOpen())
        return systemFailure("cannot create a record in the trash");
    Result<void> written = writeAll(file.number(), bytesOf(text));
    if (written)
        written = finishWriting(file.number(), Durability::synced);
    if (written)
        written = syncFolder(info_.number());
    if (!written)
        ::unlinkat(info_.number(), name.c_str(), 0);
    return written;
}

Result<TrashedItem> TrashFolder::announce(const std::string& name, const std::string& info) const {
    const std::string infoName = name + std::string(infoEnding);
    TRY(writeInfo(infoName, info));
    return TrashedItem{path_ + "/files/" + name, path_ + "/info/" + infoName};
}

/// Creates the record first, which reserves the name for all programs that use the trash. `giveName` gives
/// the item its name, and returns 0 or the error number.
Result<TrashedItem> TrashFolder::admit(const std::string& wantedName, const std::string& info,
                                       const GiveName& giveName) const {
    const std::size_t maxLength = maxNameLengthIn(info_.number()) - infoEnding.size();
    for (unsigned attempt = 1;; ++attempt) {
        const std::string name = trashName(wantedName, attempt, maxLength);
        Result<TrashedItem> announced = announce(name, info);
        if (!announced && announced.failure().reason == Reason::alreadyExists)
            continue;
        if (!announced)
            return announced;
        const int error = giveName({files_.number(), name});
        if (error == 0)
            return announced;
        ::unlinkat(info_.number(), nameOf(announced->infoPath).c_str(), 0);
        if (error != EEXIST)
            return systemFailure("cannot move " + wantedName + " to the trash", error);
    }
}

Result<TrashedItem> TrashFolder::moveIn(const FolderEntry& entry, const std::string& wantedName,
                                        const std::string& info) const {
    RenameMechanisms mechanisms;
    return admit(wantedName, info,
                 [&](const FolderEntry& place) { return renameWithoutReplacing(entry, place, mechanisms); });
}

Result<TrashedItem> TrashFolder::linkIn(const NamelessFile& file, const std::string& wantedName,
                                        const std::string& info) const {
    bool isMissing = false;
    Result<TrashedItem> linked = admit(wantedName, info, [&](const FolderEntry& place) {
        const int error = file.giveName(place);
        isMissing = NamelessFile::isMissing(error);
        return error;
    });
    if (isMissing)
        return Failure{Reason::unsupported, "a nameless file cannot get a name in the trash"};
    return linked;
}

void TrashFolder::recordFolderSize(const TrashedItem& item) const {
    if (Result<struct stat> record = statusOf({info_.number(), nameOf(item.infoPath)}))
        recordTrashedFolderSize(root_.number(), {files_.number(), nameOf(item.path)}, record->st_mtime);
}

Result<void> TrashFolder::sync() const { return syncFolder(files_.number()); }

void TrashFolder::remove(const TrashedItem& item) const {
    if (removeTree({files_.number(), nameOf(item.path)}))
        ::unlinkat(info_.number(), nameOf(item.infoPath).c_str(), 0);
}

} // namespace kestrine
