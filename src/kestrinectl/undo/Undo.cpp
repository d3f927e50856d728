#include "kestrinectl/undo/Undo.h"

#include "models/ResizeJob.h"
#include "platform/host/files/FileStatus.h"
#include "platform/host/files/PathParts.h"

#include <filesystem>

namespace kestrine {

namespace {

/// Whether the original of `file` is at `path`.
bool isOriginal(const ReplacedFile& file, const std::string& path) {
    const Result<FileMark> mark = markOfItem(path);
    if (!mark || !mark->looksLike(file.mark))
        return false;
    const bool isSameItem = mark->device == file.mark.device && mark->inode == file.mark.inode;
    const Result<ContentDigest> content = isSameItem ? Failure{Reason::empty, ""} : digestOfFile(path);
    return !content || *content != file.content; // a copy from another file system, not the result
}

bool isUntouchedResult(const ReplacedFile& file) {
    const Result<ContentDigest> content = digestOfFile(file.result);
    return content && *content == file.content;
}

void removeResult(const ReplacedFile& file) {
    if (isUntouchedResult(file))
        (void)removeFile(file.result);
}

void makeFolderOf(const std::string& path) {
    std::error_code ignored; // the move reports it
    std::filesystem::create_directories(folderOf(path), ignored);
}

} // namespace

/// The item itself if it was moved there, else one that looks like it.
std::optional<TrashedItem> Undo::inTrash(const ReplacedFile& file) {
    std::optional<TrashedItem> alike;
    for (const TrashedItem& item : trash_.itemsFrom(file.original)) {
        const Result<FileMark> mark = markOfItem(item.path);
        if (mark && *mark == file.mark)
            return item;
        if (mark && mark->looksLike(file.mark))
            alike = item;
    }
    return alike;
}

/// An interrupted undo may have left the record of an original that is back.
void Undo::noteTaken(const ReplacedFile& file) {
    for (const TrashedItem& item : trash_.itemsFrom(file.original))
        if (!markOfItem(item.path))
            taken_.push_back(item);
    folders_.insert(folderOf(file.original));
}

void Undo::settle() { removeRecords(taken_, folders_); }

UndoneFile Undo::takeBack(const ReplacedFile& file) {
    if (!file.hidden.empty())
        (void)removeFile(file.hidden);
    if (isOriginal(file, file.original)) {
        if (file.isReplaced && file.result != file.original) // it came back in another way
            removeResult(file);
        noteTaken(file);
        return {UndoneFile::Kind::inPlace, file.original, ""};
    }
    if (!file.broughtBackAs.empty() && isOriginal(file, file.broughtBackAs))
        return {UndoneFile::Kind::beside, file.broughtBackAs, ""};
    const std::optional<TrashedItem> item = inTrash(file);
    if (!item)
        return {UndoneFile::Kind::emptied, "", ""};
    removeResult(file);
    return bringBack(file, *item, itemExists(file.result));
}

/// Notes a name that is not the original's own before it is used.
Result<std::string> Undo::placeFor(const ReplacedFile& file) {
    const std::string path = uniqueFileName(NSString::fromUTF8(file.original)).utf8();
    if (path != file.original)
        TRY(run_.noteNewName(file, path));
    return path;
}

UndoneFile Undo::bringBack(const ReplacedFile& file, const TrashedItem& item, bool isEdited) {
    using Kind = UndoneFile::Kind;
    makeFolderOf(file.original);
    const Result<std::string> place = placeFor(file);
    if (!place)
        return {Kind::failed, "", place.failure().text};
    if (const Result<void> moved = takeOutOfTrash(item, *place); !moved)
        return {Kind::failed, "", moved.failure().text};
    taken_.push_back(item);
    folders_.insert(folderOf(*place));
    const Kind kind = isEdited ? Kind::beside : *place != file.original ? Kind::renamed : Kind::back;
    return {kind, *place, ""};
}

} // namespace kestrine
