#include "kestrinectl/text/Replacement.h"

#include <algorithm>

namespace kestrine {

std::string replaced(std::string_view text, std::span<const Replacement> table) {
    std::string result;
    for (const char character : text) {
        const auto row = std::ranges::find(table, character, &Replacement::character);
        if (row == table.end())
            result += character;
        else
            result += row->text;
    }
    return result;
}

} // namespace kestrine
