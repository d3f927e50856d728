// Upper, lower and folded case by Unicode's rules, without locale. ICU is opened on the first character
// beyond ASCII and stays open; where it is missing such characters stay as they are.
#pragma once

#include <string>
#include <string_view>

namespace kestrine {

/// Full mapping: the text may become longer ("ß" gives "SS").
std::u16string upperCased(std::u16string_view text);
std::u16string lowerCased(std::u16string_view text);

/// Simple case folding: one code point for one, so that texts can be compared code point by code point.
/// A lone surrogate folds to itself.
char32_t caseFolded(char32_t codePoint);

} // namespace kestrine
