// Searching for a string in a range of another one, with or without regard to case.
#pragma once

#include "platform/foundation/text/NSString.h"

namespace kestrine {

/// The search options, as bits. Without options the code units are compared literally.
inline constexpr unsigned NSCaseInsensitiveSearch = 1;

/// `rangeOfString:options:range:`: the first occurrence of `part` inside `range`, or {NSNotFound, 0}. An
/// empty part does not occur. A case-insensitive search compares code points after simple case folding: a
/// match never contains half of a surrogate pair, and its length may differ from that of `part`. Raises
/// NSRangeException if `range` exceeds the text.
NSRange rangeOfString(const NSString& text, const NSString& part, unsigned options, NSRange range);

/// The same in the whole text.
NSRange rangeOfString(const NSString& text, const NSString& part, unsigned options);

} // namespace kestrine
