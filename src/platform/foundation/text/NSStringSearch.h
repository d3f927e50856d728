// Searching a piece of text in a stretch of text, literally or without regard to case.
#pragma once

#include "platform/foundation/text/NSString.h"

namespace kestrine {

/// The search options, as bits. Without any the comparison is literal, code unit by code unit.
inline constexpr unsigned NSCaseInsensitiveSearch = 1;

/// `rangeOfString:options:range:`: the first occurrence of `part` that lies whole inside of `range`, or
/// {NSNotFound, 0}; an empty part occurs nowhere. Without regard to case, texts are compared code point by
/// code point in simple case folding: a match never takes half of a surrogate pair, and may be longer or
/// shorter than `part`. Raises NSRangeException when `range` reaches past the end of the text.
NSRange rangeOfString(const NSString& text, const NSString& part, unsigned options, NSRange range);

/// The same in the whole text.
NSRange rangeOfString(const NSString& text, const NSString& part, unsigned options);

} // namespace kestrine
