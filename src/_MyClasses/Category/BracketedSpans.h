// Taking the bracketed parts out of a text, where opening and closing delimiter are two characters.
#pragma once

#include "_MyClasses/Category/QuotedSpans.h"

namespace kestrine::StringUtility {

/// What is left when span after span, from the first opening to the next closing bracket, is taken wherever
/// that very text occurs, until there is none; what stood around a span then touches. The time grows with the
/// text's length, however many spans there are.
std::u16string withoutBracketedSpans(std::u16string_view text, char16_t opening, char16_t closing,
                                     EmptySpan emptySpan);

} // namespace kestrine::StringUtility
