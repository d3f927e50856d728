// TrashSearch: finds items in the user's trashes by their original places, and takes them out.
#pragma once

#include "platform/host/process/Environment.h"
#include "platform/host/trash/TrashFolder.h"

#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace kestrine {

struct FoundItems {
    std::vector<TrashedItem> items;
    std::optional<Failure> obstacle; ///< set if a part of a trash could not be read
};

/// Reads the records of each trash once, when it is needed first.
class TrashSearch {
public:
    explicit TrashSearch(Environment environment) : environment_(std::move(environment)) {}

    /// The items that were at `path` (absolute; without links in the folder part), those in the home trash
    /// first. Records without an item are listed as well.
    FoundItems itemsFrom(const std::string& path);

private:
    struct Records {
        std::multimap<std::string, TrashedItem> items; ///< by original path
        std::optional<Failure> obstacle;

        void read(const std::string& trash, const std::string& topFolder);
        void note(const Failure& failure);
    };

    const Records& recordsOf(const std::string& trash, const std::string& topFolder);

    Environment environment_;
    std::map<std::string, Records> trashes_;          ///< by path
    std::map<std::string, Result<std::string>> tops_; ///< where the file systems of folders are mounted
};

/// Moves an item out of the trash to `path`. Fails with alreadyExists if the name is in use. An item on
/// another file system is copied, compared and then removed. Bytes, times and attributes stay. The record
/// stays as well, because it must outlive a power failure until the folder of `path` is synced; see
/// removeRecords(). `hidden` is the temporary name of a copy until it is complete; it remains only if the
/// process is killed.
Result<void> takeOutOfTrash(const TrashedItem& item, const std::string& path,
                            const std::string& hidden = temporaryName());

/// Syncs the folders that items were moved to, and removes the records of the items. For many items at once,
/// because syncing takes long. Fails if a folder cannot be synced; then the records stay.
Result<void> removeRecords(const std::vector<TrashedItem>& items, const std::set<std::string>& folders);

} // namespace kestrine
