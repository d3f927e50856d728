// Copies or moves one item into a folder.
// A failure leaves the folder as it was, unless a part of the original was already removed.
#pragma once

#include "platform/finder/Finder.h"
#include "platform/finder/FinderItem.h"

namespace kestrine {

/// Copies the item into the folder under its own name. In the item's own folder the copy gets another name
/// ("a copy.jpg"); with Replacing::yes nothing happens there.
Result<void> copyInto(const FinderFolder& folder, const FinderItem& item, Replacing replacing);

/// Moves the item into the folder: by renaming, or between volumes by a complete copy.
Result<void> moveInto(const FinderFolder& folder, const FinderItem& item, Replacing replacing);

} // namespace kestrine
