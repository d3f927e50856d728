// numberBetween: the range of an option that takes a number.
#pragma once

#include "kestrinectl/text/PlainNumber.h"

#include <CLI/CLI.hpp>
#include <string>
#include <type_traits>

namespace kestrine {

/// Accepts numbers of this type from `low` to `high` and nothing else, not even NaN.
template <class Number>
CLI::Validator numberBetween(Number low, Number high) {
    const auto text = [](Number number) {
        if constexpr (std::is_integral_v<Number>)
            return std::to_string(number);
        else
            return plainNumber(number);
    };
    const std::string range = text(low) + " to " + text(high);
    const auto complaint = [low, high, range](std::string& word) -> std::string {
        Number number{};
        const bool fits = CLI::detail::lexical_cast(word, number) && number >= low && number <= high;
        return fits ? "" : "must be a number from " + range;
    };
    return CLI::Validator(complaint, range);
}

} // namespace kestrine
