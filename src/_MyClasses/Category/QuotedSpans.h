// Taking the quoted parts out of a text, where opening and closing delimiter are the same character.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace kestrine::StringUtility {

/// What becomes of a span with nothing between its delimiters when its turn comes.
enum class EmptySpan { goes, endsTaking };

struct QuotedSpans {
    std::vector<std::u16string> spans; ///< what stood between the quotes, in the order of taking
    std::u16string rest;               ///< what is left of the text
};

/// Takes span after span: from the first quote to the next, wherever that very text occurs; what stood around
/// it then touches. Ends when there are no two quotes. The time grows with the text's length, however many
/// spans there are.
QuotedSpans takeQuotedSpans(std::u16string_view text, char16_t quote, EmptySpan emptySpan);

} // namespace kestrine::StringUtility
