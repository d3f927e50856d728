// UTF-8 to UTF-16 and back, strict, with one lone surrogate U+DC80 to U+DCFF for each byte that is no
// part of valid UTF-8, so that any bytes at all survive the way there and back.
#pragma once

#include <string>
#include <string_view>

namespace kestrine {

/// Overlong forms, surrogates and values beyond U+10FFFF are as invalid as stray bytes.
std::u16string utf16FromUTF8(std::string_view bytes);

/// The inverse. A lone surrogate that stands for no byte becomes U+FFFD.
std::string utf8FromUTF16(std::u16string_view text);

inline bool isHighSurrogate(char32_t unit) { return (unit & 0xfffffc00) == 0xd800; }
inline bool isLowSurrogate(char32_t unit) { return (unit & 0xfffffc00) == 0xdc00; }

/// The code point that begins at `index`, which lies inside: a pair taken together, else the unit itself.
char32_t codePointAt(std::u16string_view text, std::size_t index);

/// How many UTF-16 code units `codePoint` takes.
inline std::size_t utf16Length(char32_t codePoint) { return codePoint > 0xffff ? 2 : 1; }

} // namespace kestrine
