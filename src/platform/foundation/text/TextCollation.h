// The order in which people expect names in a list: numbers by value, case and width without weight.
#pragma once

#include <string_view>

namespace kestrine {

/// -1, 0 or 1 for `text` before, equal to or after `other` in the root order of Unicode collation: composed
/// and decomposed, full and half width, upper and lower case are the same; accents, punctuation and blanks
/// count; a run of digits counts by its value (of up to 254 digits); hiragana comes before the katakana of
/// the same sound. Without ICU texts are compared code unit by code unit.
int naturalOrder(std::u16string_view text, std::u16string_view other);

} // namespace kestrine
