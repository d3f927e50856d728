// StoredPresets: the sets and the selection that the preferences hold.
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

/// The sets stored in a domain, in order. Fails when there is a value that cannot be read; none stored is an
/// empty list.
Result<ResizeSets> storedSets(const PropertyList& domain);

/// The positions of the selected sets. Fails likewise; none stored is the empty set.
Result<std::shared_ptr<const NSIndexSet>> storedSelection(const PropertyList& domain);

/// The archives of the two values, to be stored again.
Result<std::shared_ptr<const NSData>> archivedSets(const ResizeSets& sets);
Result<std::shared_ptr<const NSData>> archivedSelection(const NSIndexSet& selection);

} // namespace kestrine
