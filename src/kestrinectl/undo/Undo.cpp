#include "kestrinectl/undo/Undo.h"

#include "models/ResizeJob.h"
#include "platform/host/files/FileStatus.h"
#include "platform/host/files/PathParts.h"
#include "platform/host/files/RemoveUnchanged.h"

#include <algorithm>
#include <filesystem>

namespace kestrine {

namespace {

bool isAbsent(const Failure& failure) {
    return failure.reason == Reason::notFound || failure.reason == Reason::notRegularFile;
}

/// Whether the original of `file` is at `path`.
Result<bool> isOriginal(const ReplacedFile& file, const std::string& path) {
    const Result<FileMark> mark = markOfItem(path);
    if (!mark && !isAbsent(mark.failure()))
        return mark.failure();
    if (!mark || !mark->looksLike(file.mark))
        return false;
    if (mark->device == file.mark.device && mark->inode == file.mark.inode)
        return true;
    return TRY(digestOfFile(path)) != file.content; // a copy from another file system, not the result
}

/// A temporary name derived from the recorded one, so that the next undo finds the file if this one is
/// killed. Each `distance` (1 to 15) gives a different name.
std::string temporaryNameFor(const ReplacedFile& file, std::ptrdiff_t distance) {
    constexpr std::size_t dot = 1, digits = 16;
    std::string name = nameOf(file.hidden); // as temporaryName() makes it
    if (name.size() < dot + digits)
        return temporaryName();
    const auto first = name.begin() + dot;
    std::rotate(first, first + distance, first + digits);
    return name;
}

/// The temporary name of the result while it is examined.
std::string asideName(const ReplacedFile& file) { return temporaryNameFor(file, 8); }

/// The temporary name of an original while it is copied from another file system.
std::string copyName(const ReplacedFile& file) { return temporaryNameFor(file, 4); }

Result<bool> removeResult(const ReplacedFile& file) {
    return removeIfContentIs(file.result, file.content, asideName(file));
}

/// Removes what a killed run or undo has left.
void removeLeftovers(const ReplacedFile& file) {
    if (file.hidden.empty())
        return;
    (void)removeFile(file.hidden);
    (void)removeFile(joinedPath(folderOf(file.original), copyName(file)));
    const std::string aside = joinedPath(folderOf(file.result), asideName(file));
    if (const Result<ContentDigest> content = digestOfFile(aside); content && *content == file.content)
        (void)removeFile(aside);
}

void makeFolderOf(const std::string& path) {
    std::error_code ignored; // the move reports it
    std::filesystem::create_directories(folderOf(path), ignored);
}

} // namespace

/// The moved item itself, else one that looks like it. Fails if the item may be in a part of a trash that
/// cannot be read.
Result<std::optional<TrashedItem>> Undo::inTrash(const ReplacedFile& file) {
    FoundItems found = trash_.itemsFrom(file.original);
    std::optional<TrashedItem> alike;
    for (const TrashedItem& item : found.items) {
        const Result<FileMark> mark = markOfItem(item.path);
        if (mark && *mark == file.mark)
            return std::optional(item);
        if (mark && mark->looksLike(file.mark))
            alike = item;
        if (!mark && !isAbsent(mark.failure()))
            found.obstacle = mark.failure();
    }
    if (!alike && found.obstacle)
        return *found.obstacle;
    return alike;
}

/// An interrupted undo may have left the record of an original that is back.
void Undo::noteTaken(const ReplacedFile& file) {
    for (const TrashedItem& item : trash_.itemsFrom(file.original).items)
        if (const Result<FileMark> mark = markOfItem(item.path); !mark && isAbsent(mark.failure()))
            taken_.push_back(item);
    folders_.insert(folderOf(file.original));
}

Result<void> Undo::settle() { return removeRecords(taken_, folders_); }

UndoneFile Undo::takeBack(const ReplacedFile& file) {
    Result<UndoneFile> undone = takenBack(file);
    return undone ? *std::move(undone) : UndoneFile{UndoneFile::Kind::failed, "", undone.failure().text};
}

Result<UndoneFile> Undo::takenBack(const ReplacedFile& file) {
    using Kind = UndoneFile::Kind;
    removeLeftovers(file);
    if (TRY(isOriginal(file, file.original))) {
        if (file.isReplaced && file.result != file.original) // something else brought it back
            TRY(removeResult(file));
        noteTaken(file);
        return UndoneFile{Kind::inPlace, file.original, ""};
    }
    if (!file.broughtBackAs.empty() && TRY(isOriginal(file, file.broughtBackAs)))
        return UndoneFile{Kind::beside, file.broughtBackAs, ""};
    const std::optional<TrashedItem> item = TRY(inTrash(file));
    if (!item)
        return UndoneFile{Kind::emptied, "", ""};
    TRY(removeResult(file));
    return bringBack(file, *item, itemExists(file.result));
}

/// Records a name other than the original's own before it is used.
Result<std::string> Undo::placeFor(const ReplacedFile& file) {
    const std::string path = uniqueFileName(NSString::fromUTF8(file.original)).utf8();
    if (path != file.original)
        TRY(run_.noteNewName(file, path));
    return path;
}

Result<UndoneFile> Undo::bringBack(const ReplacedFile& file, const TrashedItem& item, bool isEdited) {
    using Kind = UndoneFile::Kind;
    makeFolderOf(file.original);
    const std::string place = TRY(placeFor(file));
    TRY(takeOutOfTrash(item, place, copyName(file)));
    taken_.push_back(item);
    folders_.insert(folderOf(place));
    const Kind kind = isEdited ? Kind::beside : place != file.original ? Kind::renamed : Kind::back;
    return UndoneFile{kind, place, ""};
}

} // namespace kestrine
