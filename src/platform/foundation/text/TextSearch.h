// TextSearch: substring search in linear time. The standard search may need the product of both lengths.
#pragma once

#include <string_view>
#include <vector>

namespace kestrine {

/// For parts up to this length the standard search is used. It is fast and makes at most this many
/// comparisons at each position.
inline constexpr std::size_t maxStandardSearch = 32;

/// The prefix function of the Knuth-Morris-Pratt algorithm: element i is the length of the longest proper
/// prefix of part[0..i] that is also a suffix of it.
template <class Unit>
std::vector<std::size_t> prefixFunction(std::basic_string_view<Unit> part) {
    std::vector<std::size_t> lengths(part.size());
    std::size_t matched = 0;
    for (std::size_t i = 1; i < part.size(); ++i) {
        while (matched > 0 && part[i] != part[matched])
            matched = lengths[matched - 1];
        matched += part[i] == part[matched];
        lengths[i] = matched;
    }
    return lengths;
}

/// The same result as text.find(part, start).
template <class Unit>
std::size_t findText(std::basic_string_view<Unit> text, std::basic_string_view<Unit> part,
                     std::size_t start = 0) {
    if (part.size() <= maxStandardSearch || start > text.size() || part.size() > text.size() - start)
        return text.find(part, start);
    const std::vector<std::size_t> prefixes = prefixFunction(part);
    std::size_t matched = 0;
    for (std::size_t i = start; i < text.size(); ++i) {
        while (matched > 0 && text[i] != part[matched])
            matched = prefixes[matched - 1];
        matched += text[i] == part[matched];
        if (matched == part.size())
            return i + 1 - matched;
    }
    return text.npos;
}

} // namespace kestrine
