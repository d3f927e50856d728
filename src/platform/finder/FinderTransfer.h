// Bringing one item into a folder, by renaming or by a complete copy.
// After a failure the folder is as it was, unless the failure came when the original was half removed.
#pragma once

#include "platform/finder/Finder.h"
#include "platform/finder/FinderItem.h"

namespace kestrine {

/// Copies the item into the folder, under its own name or, where it lies there itself, under a name of a
/// copy; `replacing` is for the own name.
Result<void> copyInto(const FinderFolder& folder, const FinderItem& item, Replacing replacing);

/// Moves the item into the folder.
Result<void> moveInto(const FinderFolder& folder, const FinderItem& item, Replacing replacing);

} // namespace kestrine
