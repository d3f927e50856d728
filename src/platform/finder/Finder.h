// The Finder: what scripts, Apple Events and the workspace ask to be done with files.
// Its rules stand here once, but for the workspace's recycling, which goes on after a failure. Nothing that
// exists is lost: what gives way is replaced only when that was asked for, and only when what replaces it is
// complete.
#pragma once

#include "platform/foundation/text/NSString.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace kestrine {

/// Why the Finder did not do it: a status number of the platform (-43 file not found, -5000 no rights,
/// -15267 the name is taken, -34 disk full, ...) and a sentence for people.
struct FinderError {
    std::int32_t number;
    NSString message;
};

/// Nothing when all was done.
using FinderOutcome = std::optional<FinderError>;

/// Whether an item of the same name gives way.
enum class Replacing : bool { no, yes };

// Paths are bytes, absolute. All items are looked up before anything is done; the first failure ends the
// work, and what was done before stays done. Symbolic links are items themselves, and folders work whole.
// An item that is named twice counts once; different items of one name never go into one folder (-15267).
// Mount points, and folders that hold some, are never moved, copied or replaced (-10006).

/// Moves the items to the trash.
FinderOutcome finderDelete(const std::vector<std::string>& items);

/// Copies the items into `folder`, contents, rights, times, extended attributes and all; where the folder's
/// file system keeps no attributes, the copies do without. An item that lies there already becomes
/// "a copy.jpg", "a copy 2.jpg"; with `replacing` it is its own copy, and stays.
FinderOutcome finderDuplicate(const std::vector<std::string>& items, const std::string& folder,
                              Replacing replacing);

/// Moves the items into `folder`; onto another volume by a complete copy whose original then goes, so not an
/// item with attributes onto one that keeps none (-1426). An item that lies there already stays.
FinderOutcome finderMove(const std::vector<std::string>& items, const std::string& folder,
                         Replacing replacing);

/// Makes symbolic links to the items in `folder`; a taken name is an error.
FinderOutcome finderLink(const std::vector<std::string>& items, const std::string& folder);

} // namespace kestrine
