// replaced: single characters of a string, each by another string.
#pragma once

#include <span>
#include <string>
#include <string_view>

namespace kestrine {

struct Replacement {
    char character;
    std::string_view text;
};

/// Every character that has a row in the table becomes its text; the others stay.
std::string replaced(std::string_view text, std::span<const Replacement> table);

} // namespace kestrine
