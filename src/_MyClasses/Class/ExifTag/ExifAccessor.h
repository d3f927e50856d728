// How the accessors of ExifTagReader ask a stored value for numbers: as if it were a list, so that a value of
// another kind raises.
#pragma once

#include "_MyClasses/Class/ExifTag/TagDictionary.h"

namespace kestrine {

/// The list that `value` is; null (nil) stays null. Text and data do not answer to what a list is asked: they
/// raise NSInvalidArgumentException.
const NumberList* numberListOf(const TagValue* value);

/// The number at `index`. Raises NSRangeException when the list is too short.
const NSNumber& elementOf(const NumberList& list, std::size_t index);

} // namespace kestrine
