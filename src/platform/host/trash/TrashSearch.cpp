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

/// The original path in a record; "" if it cannot be read.
std::string recordedPath(const std::string& record, const std::string& topFolder) {
    const Result<Bytes> content = readSmallFile(record, maxRecordBytes);
    if (!content)
        return "";
    const std::string text(content->begin(), content->end());
    const std::string path = originalPathIn(text).value_or("");
    return path.empty() || path.starts_with('/') ? path : joinedPath(topFolder, path);
}

/// Copies the item under a hidden name first, so that `to` is complete or absent.
Result<void> copyOut(const FolderEntry& from, const FolderEntry& to) {
    const FolderEntry hidden{to.folder, temporaryName()};
    const CopiedItem copied = TRY(copyTree(from, hidden, Original::goes));
    RenameMechanisms mechanisms;
    if (const int error = renameWithoutReplacing(hidden, to, mechanisms); error != 0) {
        (void)removeTree(hidden);
        return systemFailure("cannot create " + to.name, error);
    }
    TRY(syncFolder(to.folder));
    bool anythingRemoved = false;
    TRY(checkUnchanged(from.folder, copied));
    return removeOriginal(from.folder, copied, anythingRemoved);
}

} // namespace

const TrashSearch::Items& TrashSearch::itemsOf(const std::string& trash, const std::string& topFolder) {
    const auto [place, isNew] = trashes_.try_emplace(trash);
    const Result<FileDescriptor> info =
        isNew ? openFolder(trash + "/info") : Failure{Reason::alreadyExists, ""};
    const Result<std::vector<std::string>> names =
        info ? namesIn(info->number()) : Result<std::vector<std::string>>(info.failure());
    if (!names)
        return place->second;
    for (const std::string& name : *names) {
        if (!name.ends_with(recordEnding))
            continue;
        const std::string record = trash + "/info/" + name;
        const std::string item = name.substr(0, name.size() - recordEnding.size());
        if (const std::string path = recordedPath(record, topFolder); !path.empty())
            place->second.emplace(path, TrashedItem{trash + "/files/" + item, record});
    }
    return place->second;
}

std::vector<TrashedItem> TrashSearch::itemsFrom(const std::string& path) {
    std::vector<TrashedItem> found;
    const auto add = [&](const std::string& trash, const std::string& topFolder) {
        const Items& items = itemsOf(trash, topFolder);
        for (auto [it, end] = items.equal_range(path); it != end; ++it)
            found.push_back(it->second);
    };
    const std::string dataHome = environment_.xdgDataHome();
    if (!dataHome.empty())
        add(joinedPath(dataHome, "Trash"), "/");
    const auto [top, isNew] = tops_.try_emplace(folderOf(path));
    if (isNew)
        if (const Result<std::string> folder = topFolderOf(folderOf(path)))
            top->second = *folder;
    if (top->second.empty())
        return found;
    const std::string user = std::to_string(::geteuid());
    add(joinedPath(top->second, ".Trash/" + user), top->second);
    add(joinedPath(top->second, ".Trash-" + user), top->second);
    return found;
}

Result<void> takeOutOfTrash(const TrashedItem& item, const std::string& path) {
    const FileDescriptor trash = TRY(openFolder(folderOf(item.path)));
    const FileDescriptor folder = TRY(openFolder(folderOf(path)));
    const FolderEntry from{trash.number(), nameOf(item.path)}, to{folder.number(), nameOf(path)};
    RenameMechanisms mechanisms;
    const int error = renameWithoutReplacing(from, to, mechanisms);
    if (error == EXDEV)
        TRY(copyOut(from, to));
    else if (error != 0)
        return systemFailure("cannot create " + path, error);
    return {};
}

void removeRecords(const std::vector<TrashedItem>& items, const std::set<std::string>& folders) {
    for (const std::string& path : folders) {
        const Result<FileDescriptor> folder = openFolder(path);
        if (!folder || !syncFolder(folder->number()))
            return;
    }
    for (const TrashedItem& item : items)
        (void)removeFile(item.infoPath);
}

} // namespace kestrine
