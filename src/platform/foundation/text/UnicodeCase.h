// Upper case, lower case and case folding by the rules of Unicode, independent of the locale. ICU is loaded
// when the first character outside ASCII occurs. Without ICU such characters stay unchanged.
#pragma once

#include <string>
#include <string_view>

namespace kestrine {

/// Full mapping: the result may be longer than `text` ("ß" gives "SS").
std::u16string upperCased(std::u16string_view text);
std::u16string lowerCased(std::u16string_view text);

/// Simple case folding, which maps one code point to one. A lone surrogate stays unchanged.
char32_t caseFolded(char32_t codePoint);

} // namespace kestrine
