// The extension group `StringUtility` on NSString: cutting and mending text. Everything here is a pure
// function of the receiver, which comes first, and of its arguments.
#pragma once

#include "platform/foundation/NSString.h"

namespace kestrine::StringUtility {

// Removing and replacing: literal and case-sensitive.

/// `removeString:`: the receiver without any occurrence of `text`; always a new text, never nil.
OptionalString removeString(const NSString& receiver, const NSString& text);

/// `removeStringFrom:to:`: takes the first span from `opening` to `closing`, both included, and removes
/// that very text wherever it occurs. The receiver itself when there is no span.
NSString removeStringFrom(const NSString& receiver, const NSString& opening, const NSString& closing);

/// `removeAllStringStartFrom:endTo:`: removeStringFrom() as long as there is a span. The receiver itself
/// when there is none at all.
NSString removeAllStringStartFrom(const NSString& receiver, const NSString& opening, const NSString& closing);

/// `replaceStringFrom:to:`: every occurrence of `text` becomes `replacement`. The receiver itself when
/// `text` is empty, else a new text; never nil.
OptionalString replaceStringFrom(const NSString& receiver, const NSString& text, const NSString& replacement);

// Spans: from an opening to a closing delimiter, both included; literal and case-sensitive. {0, 0} when
// there is none: test the length, not the location.

/// `rangeOfStringFrom:to:inRange:`. Raises NSRangeException when `range` reaches past the end.
NSRange rangeOfStringFrom(const NSString& receiver, const NSString& opening, const NSString& closing,
                          NSRange range);

/// `rangeOfStringFrom:to:`.
NSRange rangeOfStringFrom(const NSString& receiver, const NSString& opening, const NSString& closing);

// Substrings: without the delimiters and without regard to case. Nil when a delimiter is missing and also
// when the substring would be empty.

/// `substringFrom:to:inRange:`: the opening delimiter lies in `range`, the closing one may lie behind it.
/// Nil also when `range` reaches past the end.
OptionalString substringFrom(const NSString& receiver, const NSString& opening, const NSString& closing,
                             NSRange range);

/// `substringFrom:to:`: what lies between the delimiters. Nil also when `opening` is.
OptionalString substringFrom(const NSString& receiver, const OptionalString& opening,
                             const NSString& closing);

/// `substringFrom:`: what follows the first occurrence of `opening`.
OptionalString substringFrom(const NSString& receiver, const NSString& opening);

/// `substringTo:`: what precedes the first occurrence of `closing`.
OptionalString substringTo(const NSString& receiver, const NSString& closing);

} // namespace kestrine::StringUtility
