// Removes bracketed parts from a string. The opening and the closing delimiter are different characters.
#pragma once

#include "_MyClasses/Category/QuotedSpans.h"

namespace kestrine::StringUtility {

/// Repeats until there is no span: takes the span from the first opening bracket to the next closing bracket
/// and removes all its occurrences. The text around a removed span can form new spans. Roughly linear in the
/// string's length.
std::u16string withoutBracketedSpans(std::u16string_view text, char16_t opening, char16_t closing,
                                     EmptySpan emptySpan);

} // namespace kestrine::StringUtility
