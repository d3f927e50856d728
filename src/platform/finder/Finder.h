// The Finder: the file operations that scripts, Apple Events and the workspace ask for.
// All three use these functions; only the workspace's recycling differs: it continues after a failure. No
// data is lost: an existing item is replaced only on request, and only when its replacement is complete.
#pragma once

#include "platform/foundation/text/NSString.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace kestrine {

/// Why an operation failed: a status number of the platform (-43 file not found, -5000 access denied,
/// -15267 the name is taken, -34 disk full, ...) and a message.
struct FinderError {
    std::int32_t number;
    NSString message;
};

/// nullopt means success.
using FinderOutcome = std::optional<FinderError>;

/// Whether an existing item of the same name is replaced.
enum class Replacing : bool { no, yes };

// Paths are absolute byte strings. All items are looked up before the first is changed. The operation stops
// at the first failure; items that were done by then stay done. Symbolic links are not followed. Folders are
// handled with all they contain. An item that is named twice counts once; two items of the same name cannot
// go into one folder (-15267). Mount points, and folders that contain some, are never moved, copied or
// replaced (-10006).

/// Moves the items to the trash.
FinderOutcome finderDelete(const std::vector<std::string>& items);

/// Copies the items into `folder`, with contents, permissions, times and extended attributes. Attributes are
/// left out when the folder's file system has none. The copy of an item that is already in `folder` is named
/// "a copy.jpg", "a copy 2.jpg"; with Replacing::yes nothing happens to such an item.
FinderOutcome finderDuplicate(const std::vector<std::string>& items, const std::string& folder,
                              Replacing replacing);

/// Moves the items into `folder`. A move to another volume makes a complete copy and then removes the
/// original; it fails when the item has attributes and the volume cannot store them (-1426). An item that is
/// already in `folder` stays.
FinderOutcome finderMove(const std::vector<std::string>& items, const std::string& folder,
                         Replacing replacing);

/// Makes symbolic links to the items in `folder`; fails when the name is taken.
FinderOutcome finderLink(const std::vector<std::string>& items, const std::string& folder);

} // namespace kestrine
