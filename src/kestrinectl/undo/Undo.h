// Undo: takes back a replacing run, file by file. It may be interrupted at any point and begun again.
#pragma once

#include "kestrinectl/undo/RunJournal.h"
#include "platform/host/trash/TrashSearch.h"

namespace kestrine {

/// The outcome for one replaced file.
struct UndoneFile {
    enum class Kind {
        back,    ///< the original is in its place again, and the result is gone
        inPlace, ///< the original was in its place already
        beside,  ///< the result was edited since and stays; the original is at `path`
        renamed, ///< the result is gone, but another file has the name of the original, which is at `path`
        emptied, ///< the original is no longer in the trash
        failed,  ///< for `reason`; it may succeed later
    };
    Kind kind = Kind::back;
    std::string path;
    std::string reason;
};

class Undo {
public:
    Undo(PastRun& run, Environment environment) : run_(run), trash_(std::move(environment)) {}

    UndoneFile takeBack(const ReplacedFile& file);

    /// Call at the end: makes it certain that the originals are back, and removes their records from the
    /// trash. After a failure, the run must be undone again for that.
    Result<void> settle();

private:
    void noteTaken(const ReplacedFile& file);
    Result<std::optional<TrashedItem>> inTrash(const ReplacedFile& file);
    Result<UndoneFile> takenBack(const ReplacedFile& file);
    Result<UndoneFile> bringBack(const ReplacedFile& file, const TrashedItem& item, bool isEdited);
    Result<std::string> placeFor(const ReplacedFile& file);

    PastRun& run_;
    TrashSearch trash_;
    std::vector<TrashedItem> taken_; ///< out of the trash
    std::set<std::string> folders_;  ///< where they are now
};

} // namespace kestrine
