// StoredPresets: reads and writes the sets and the selection in the preferences.
#pragma once

#include "models/ResizeSet.h"
#include "platform/foundation/NSIndexSet.h"
#include "platform/foundation/propertylist/PropertyList.h"

namespace kestrine {

/// The preferences domain of the presets and its two keys that concern them; both values are typedstream
/// archives.
inline constexpr const char16_t* presetsDomain = u"quov.Kestrine";
inline constexpr const char16_t* resizeSetsKey = u"resizeSets";
inline constexpr const char16_t* selectionIndexesKey = u"selectionIndexes";

/// The sets stored in a domain, in order; an empty list when none are stored. Fails when the value cannot be
/// read or contains anything that is not a set.
Result<ResizeSets> storedSets(const PropertyList& domain);

/// The positions of the selected sets, from 0; empty when none are stored. Fails when the value cannot be
/// read.
Result<std::shared_ptr<const NSIndexSet>> storedSelection(const PropertyList& domain);

/// The archives of the two values, for storing them.
Result<std::shared_ptr<const NSData>> archivedSets(const ResizeSets& sets);
Result<std::shared_ptr<const NSData>> archivedSelection(const NSIndexSet& selection);

} // namespace kestrine
