// TextSearch: finding text in text without the worst case of the standard search, whose time is the product
// of the two lengths.
#pragma once

#include <string_view>
#include <vector>

namespace kestrine {

/// For parts up to this length the standard search is at hand: it is fast, and compares no more than this at
/// each place.
inline constexpr std::size_t longestPlainSearch = 32;

/// For each beginning of `part`, by its length less one: how long the longest shorter beginning is that it
/// ends with.
template <class Unit>
std::vector<std::size_t> repeatedBeginnings(std::basic_string_view<Unit> part) {
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

/// Where `part` first occurs in `text` from `start` on, or npos, as text.find(part, start) says it.
template <class Unit>
std::size_t findText(std::basic_string_view<Unit> text, std::basic_string_view<Unit> part,
                     std::size_t start = 0) {
    if (part.size() <= longestPlainSearch || start > text.size() || part.size() > text.size() - start)
        return text.find(part, start);
    const std::vector<std::size_t> repeated = repeatedBeginnings(part);
    std::size_t matched = 0;
    for (std::size_t i = start; i < text.size(); ++i) {
        while (matched > 0 && text[i] != part[matched])
            matched = repeated[matched - 1];
        matched += text[i] == part[matched];
        if (matched == part.size())
            return i + 1 - matched;
    }
    return text.npos;
}

} // namespace kestrine
