// Natural order of names: numbers are compared by value; case and width are ignored.
#pragma once

#include <string_view>

namespace kestrine {

/// -1, 0 or 1 if `text` is before, equal to or after `other` in the root order of Unicode collation. Composed
/// and decomposed characters are equal, and so are full and half width, and upper and lower case. Accents,
/// punctuation and spaces count. A sequence of digits (up to 254) counts by its value. Hiragana comes before
/// katakana with the same sound. Without ICU the code units are compared.
int naturalOrder(std::u16string_view text, std::u16string_view other);

} // namespace kestrine
