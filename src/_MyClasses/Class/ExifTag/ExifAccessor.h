// The rules by which the accessors of ExifTagReader read a stored value.
#pragma once

#include "_MyClasses/Class/ExifTag/TagDictionary.h"

#include <optional>

namespace kestrine {

/// The list that `value` is; null (nil) stays null. Text and data do not answer to what a list is asked:
/// they raise NSInvalidArgumentException.
const NumberList* numberListOf(const TagValue* value);

/// The first number of the list; nothing when `value` is nil or the list is empty. Raises like
/// numberListOf().
std::optional<NSNumber> firstNumberOf(const TagValue* value);

} // namespace kestrine
