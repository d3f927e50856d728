// Strict conversion between UTF-8 and UTF-16. Each byte that is not part of valid UTF-8 becomes a lone
// surrogate from U+DC80 to U+DCFF, so that all byte strings can be converted back without loss.
#pragma once

#include <string>
#include <string_view>

namespace kestrine {

/// Overlong forms, surrogates and values above U+10FFFF are invalid.
std::u16string utf16FromUTF8(std::string_view bytes);

/// The inverse of utf16FromUTF8(). A lone surrogate that does not stand for a byte becomes U+FFFD.
std::string utf8FromUTF16(std::u16string_view text);

inline bool isHighSurrogate(char32_t unit) { return (unit & 0xfffffc00) == 0xd800; }
inline bool isLowSurrogate(char32_t unit) { return (unit & 0xfffffc00) == 0xdc00; }

/// The code point at `index`, which must be less than the length: a surrogate pair gives one code point, a
/// lone surrogate gives itself.
char32_t codePointAt(std::u16string_view text, std::size_t index);

/// The number of UTF-16 code units for `codePoint`.
inline std::size_t utf16Length(char32_t codePoint) { return codePoint > 0xffff ? 2 : 1; }

} // namespace kestrine
