#include "kestrinectl/ConvertWords.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <optional>
#include <string_view>

namespace kestrine {

namespace {

constexpr double lowestPercentage = 0.001, highestPercentage = 100'000;

struct NamedGravity {
    std::string_view name;
    Gravity gravity;
};
constexpr std::array<NamedGravity, 9> gravities = {{
    {"center", {0.5, 0.5}},
    {"north", {0.5, 0}},
    {"northeast", {1, 0}},
    {"east", {1, 0.5}},
    {"southeast", {1, 1}},
    {"south", {0.5, 1}},
    {"southwest", {0, 1}},
    {"west", {0, 0.5}},
    {"northwest", {0, 0}},
}};

Failure malformed(const std::string& text) { return {Reason::malformed, text}; }

/// The whole word as a number between `low` and `high`.
template <class Number>
std::optional<Number> numberIn(std::string_view word, Number low, Number high) {
    Number number{};
    const auto [end, error] = std::from_chars(word.begin(), word.end(), number);
    const bool fits = error == std::errc() && end == word.end() && number >= low && number <= high;
    return fits ? std::optional(number) : std::nullopt;
}

/// The numbers between commas; nullopt if one of them is none.
template <class Number>
std::optional<std::vector<Number>> numbersIn(std::string_view words, Number low, Number high) {
    std::vector<Number> numbers;
    for (std::size_t begin = 0; begin <= words.size();) {
        const std::size_t end = std::min(words.find(',', begin), words.size());
        const auto number = numberIn(words.substr(begin, end - begin), low, high);
        if (!number)
            return std::nullopt;
        numbers.push_back(*number);
        begin = end + 1;
    }
    return numbers;
}

} // namespace

Result<std::vector<std::uint32_t>> lengthsIn(const std::string& word) {
    if (auto lengths = numbersIn(word, std::uint32_t{1}, highestLength))
        return *std::move(lengths);
    return malformed("must be a whole number from 1 to 1000000, or several with commas between them");
}

Result<std::vector<double>> percentagesIn(const std::string& word) {
    if (auto percentages = numbersIn(word, lowestPercentage, highestPercentage))
        return *std::move(percentages);
    return malformed("must be a number from 0.001 to 100000, or several with commas between them");
}

Result<Box> boxIn(const std::string& word) {
    const std::string_view view = word;
    const std::size_t cross = std::min(view.find('x'), view.size());
    const auto width = numberIn(view.substr(0, cross), std::uint32_t{1}, highestLength);
    const auto height =
        numberIn(view.substr(std::min(cross + 1, view.size())), std::uint32_t{1}, highestLength);
    if (width && height)
        return Box{*width, *height};
    return malformed("must be a width and a height in pixels, such as 1200x800");
}

Result<Gravity> gravityNamed(const std::string& word) {
    const auto* row = std::ranges::find(gravities, word, &NamedGravity::name);
    if (row != gravities.end())
        return row->gravity;
    return malformed("must be " + gravityNames());
}

std::string gravityNames() {
    std::string names;
    for (const NamedGravity& row : gravities) {
        const bool isLast = &row == &gravities.back();
        names += (names.empty() ? "" : isLast ? " or " : ", ") + std::string(row.name);
    }
    return names;
}

} // namespace kestrine
