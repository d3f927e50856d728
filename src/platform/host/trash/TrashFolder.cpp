#include "platform/host/trash/TrashFolder.h"

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

/// Opens a folder for the user alone, making it when it is missing.
Result<FileDescriptor> openOrMake(const FolderEntry& entry) {
    if (::mkdirat(entry.folder, entry.name.c_str(), 0700) != 0 && errno != EEXIST)
        return systemFailure("cannot make the folder " + entry.name);
    return openSubfolder(entry);
}

std::size_t longestNameIn(int folder) {
    const long longest = ::fpathconf(folder, _PC_NAME_MAX);
    return (longest > 0 ? static_cast<std::size_t>(longest) : 255) - infoEnding.size();
}

ByteView bytesIn(const std::string& text) {
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
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

/// The owner is looked at after making it, too: some file systems give every file to the same user.
Result<TrashFolder> TrashFolder::openOwn(const FolderEntry& entry, const std::string& path) {
    const bool isNew = ::mkdirat(entry.folder, entry.name.c_str(), 0700) == 0;
    FileDescriptor root = TRY(openSubfolder(entry));
    struct stat status {};
    if (::fstat(root.number(), &status) != 0)
        return systemFailure("cannot examine " + path);
    if (status.st_uid == ::geteuid())
        return openParts(path, std::move(root));
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

/// Synced: an item whose record is lost in a power cut could not be put back.
Result<void> TrashFolder::writeInfo(const std::string& name, const std::string& text) const {
    const FileDescriptor file(
        ::openat(info_.number(), name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600));
    if (!file.isOpen())
        return systemFailure("cannot make a record in the trash");
    Result<void> written = writeAll(file.number(), bytesIn(text));
    if (written)
        written = finishWriting(file.number(), Durability::synced);
    if (!written)
        ::unlinkat(info_.number(), name.c_str(), 0);
    return written;
}

/// The record is made first: it reserves the name against all other programs that use the trash.
Result<TrashedItem> TrashFolder::moveIn(const FolderEntry& entry, const std::string& wantedName,
                                        const std::string& info) const {
    const std::size_t longest = longestNameIn(info_.number());
    RenameMechanisms mechanisms;
    for (unsigned attempt = 1;; ++attempt) {
        const std::string name = trashName(wantedName, attempt, longest);
        const std::string infoName = name + std::string(infoEnding);
        Result<void> reserved = writeInfo(infoName, info);
        if (!reserved && reserved.failure().reason == Reason::alreadyExists)
            continue;
        if (!reserved)
            return reserved.failure();
        const int error = renameWithoutReplacing(entry, {files_.number(), name}, mechanisms);
        if (error == 0)
            return TrashedItem{path_ + "/files/" + name, path_ + "/info/" + infoName};
        ::unlinkat(info_.number(), infoName.c_str(), 0);
        if (error == EXDEV)
            return Failure{Reason::unsupported, entry.name + " is on another file system than the trash"};
        if (error != EEXIST)
            return systemFailure("cannot move " + entry.name + " to the trash", error);
    }
}

void TrashFolder::recordFolderSize(const TrashedItem& item) const {
    if (Result<struct stat> record = statusOf({info_.number(), nameOf(item.infoPath)}))
        recordTrashedFolderSize(root_.number(), {files_.number(), nameOf(item.path)}, record->st_mtime);
}

Result<void> TrashFolder::sync() const {
    TRY(syncFolder(info_.number()));
    return syncFolder(files_.number());
}

void TrashFolder::remove(const TrashedItem& item) const {
    removeTree({files_.number(), nameOf(item.path)});
    ::unlinkat(info_.number(), nameOf(item.infoPath).c_str(), 0);
}

} // namespace kestrine
