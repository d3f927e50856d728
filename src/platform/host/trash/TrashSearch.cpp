#include "platform/host/trash/TrashSearch.h"

#include "platform/host/files/ExclusiveRename.h"
#include "platform/host/files/FileContent.h"
#include "platform/host/files/Folders.h"
#include "platform/host/files/MountPoints.h"
#include "platform/host/files/PathParts.h"
#include "platform/host/files/TreeCopy.h"
#include "platform/host/trash/TrashInfo.h"

#include <cerrno>
#include <unistd.h>

namespace kestrine {

namespace {

constexpr std::string_view recordEnding = ".trashinfo";
constexpr std::uint64_t maxRecordBytes = 1 << 16;

/// The original path in a record; "" if the record is not valid.
Result<std::string> recordedPath(const std::string& record, const std::string& topFolder) {
    const Bytes content = TRY(readSmallFile(record, maxRecordBytes));
    const std::string path = originalPathIn(std::string(content.begin(), content.end())).value_or("");
    return path.empty() || path.starts_with('/') ? path : joinedPath(topFolder, path);
}

/// Removes a file in one step: if it were renamed first and this process killed, it would stay in the trash
/// without a record. No other process has a reason to put another file in its place.
Result<void> removeFromTrash(const FolderEntry& item, const CopiedItem& copied) {
    bool anythingRemoved = false;
    if (S_ISDIR(copied.original.st_mode))
        return removeOriginal(item.folder, copied, anythingRemoved);
    if (::unlinkat(item.folder, item.name.c_str(), 0) != 0)
        return systemFailure("cannot remove " + item.name);
    return {};
}

/// Copies the item under a hidden name first, so that `to` is complete or absent.
Result<void> copyOut(const FolderEntry& from, const FolderEntry& to, const std::string& hiddenName) {
    const FolderEntry hidden{to.folder, hiddenName};
    const CopiedItem copied = TRY(copyTree(from, hidden, Original::goes));
    RenameMechanisms mechanisms;
    if (const int error = renameWithoutReplacing(hidden, to, mechanisms); error != 0) {
        (void)removeTree(hidden);
        return systemFailure("cannot create " + to.name, error);
    }
    TRY(syncFolder(to.folder));
    TRY(checkUnchanged(from.folder, copied));
    return removeFromTrash(from, copied);
}

} // namespace

/// Missing parts, and files that no trash creates, are not obstacles, because they cannot hide an item.
void TrashSearch::Records::note(const Failure& failure) {
    const bool hidesNothing = failure.reason == Reason::notFound || failure.reason == Reason::tooLarge
                              || failure.reason == Reason::notRegularFile;
    if (!hidesNothing && !obstacle)
        obstacle = failure;
}

void TrashSearch::Records::read(const std::string& trash, const std::string& topFolder) {
    const Result<FileDescriptor> info = openFolder(trash + "/info");
    const Result<std::vector<std::string>> names =
        info ? namesIn(info->number()) : Result<std::vector<std::string>>(info.failure());
    if (!names)
        return note(names.failure());
    for (const std::string& name : *names) {
        if (!name.ends_with(recordEnding))
            continue;
        const std::string record = trash + "/info/" + name;
        const std::string item = name.substr(0, name.size() - recordEnding.size());
        const Result<std::string> path = recordedPath(record, topFolder);
        if (!path)
            note(path.failure());
        else if (!path->empty())
            items.emplace(*path, TrashedItem{trash + "/files/" + item, record});
    }
}

const TrashSearch::Records& TrashSearch::recordsOf(const std::string& trash, const std::string& topFolder) {
    const auto [place, isNew] = trashes_.try_emplace(trash);
    if (isNew)
        place->second.read(trash, topFolder);
    return place->second;
}

FoundItems TrashSearch::itemsFrom(const std::string& path) {
    FoundItems found;
    const auto add = [&](const std::string& trash, const std::string& topFolder) {
        const Records& records = recordsOf(trash, topFolder);
        for (auto [it, end] = records.items.equal_range(path); it != end; ++it)
            found.items.push_back(it->second);
        if (!found.obstacle)
            found.obstacle = records.obstacle;
    };
    const std::string dataHome = environment_.xdgDataHome();
    if (!dataHome.empty())
        add(joinedPath(dataHome, "Trash"), "/");
    const std::string folder = folderOf(path);
    auto top = tops_.find(folder);
    if (top == tops_.end())
        top = tops_.emplace(folder, topFolderOf(folder)).first;
    if (const Result<std::string>& place = top->second; place) {
        const std::string user = std::to_string(::geteuid());
        add(joinedPath(*place, ".Trash/" + user), *place);
        add(joinedPath(*place, ".Trash-" + user), *place);
    } else if (place.failure().reason != Reason::notFound && !found.obstacle) {
        found.obstacle = place.failure();
    }
    return found;
}

Result<void> takeOutOfTrash(const TrashedItem& item, const std::string& path, const std::string& hidden) {
    const FileDescriptor trash = TRY(openFolder(folderOf(item.path)));
    const FileDescriptor folder = TRY(openFolder(folderOf(path)));
    const FolderEntry from{trash.number(), nameOf(item.path)}, to{folder.number(), nameOf(path)};
    RenameMechanisms mechanisms;
    const int error = renameWithoutReplacing(from, to, mechanisms);
    if (error == EXDEV)
        TRY(copyOut(from, to, hidden));
    else if (error != 0)
        return systemFailure("cannot create " + path, error);
    return {};
}

Result<void> removeRecords(const std::vector<TrashedItem>& items, const std::set<std::string>& folders) {
    for (const std::string& path : folders) {
        const FileDescriptor folder = TRY(openFolder(path));
        TRY(syncFolder(folder.number()));
    }
    for (const TrashedItem& item : items)
        (void)removeFile(item.infoPath);
    return {};
}

} // namespace kestrine
