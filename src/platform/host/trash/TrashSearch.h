// TrashSearch: finds items in the user's trashes by their original places, and takes them out.
#pragma once

#include "platform/host/process/Environment.h"
#include "platform/host/trash/TrashFolder.h"

#include <functional>
#include <map>
#include <string>
#include <vector>

namespace kestrine {

/// Reads the records of each trash once, when it is needed first.
class TrashSearch {
public:
    explicit TrashSearch(Environment environment) : environment_(std::move(environment)) {}

    /// The items that were at `path` (absolute; without links in the folder part), those in the home trash
    /// first. Records without an item are listed as well.
    std::vector<TrashedItem> itemsFrom(const std::string& path);

private:
    using Items = std::multimap<std::string, TrashedItem>; ///< by original path

    const Items& itemsOf(const std::string& trash, const std::string& topFolder);

    Environment environment_;
    std::map<std::string, Items> trashes_;    ///< by path
    std::map<std::string, std::string> tops_; ///< the folders where the file systems of folders are mounted
};

/// Moves an item out of the trash to `path`, whose name must be free (alreadyExists), and removes its record.
/// An item of another file system is copied, compared and then removed. Bytes, times and attributes stay.
Result<void> takeOutOfTrash(const TrashedItem& item, const std::string& path);

/// Removes the record of an item that is no longer in the trash.
void removeRecord(const TrashedItem& item);

} // namespace kestrine
