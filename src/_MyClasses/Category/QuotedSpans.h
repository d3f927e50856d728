// Removes quoted parts from a string. The opening and the closing delimiter are the same character.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace kestrine::StringUtility {

/// What to do at a span with nothing between its delimiters: remove it like others, or stop.
enum class EmptySpan { isRemoved, stops };

struct QuotedSpans {
    std::vector<std::u16string> spans; ///< the text between the quotes, in the order of removal
    std::u16string rest;               ///< the string without the spans
};

/// Repeats until fewer than two quotes are left: takes the span from the first quote to the next and removes
/// all its occurrences. The text around a removed span can form new spans. Linear in the string's length.
QuotedSpans takeQuotedSpans(std::u16string_view text, char16_t quote, EmptySpan emptySpan);

} // namespace kestrine::StringUtility
