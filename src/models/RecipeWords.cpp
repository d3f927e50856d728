#include "models/RecipeWords.h"

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

struct NamedColor {
    std::string_view name;
    RGBColor color;
};
constexpr std::array<NamedColor, 8> colors = {{
    {"white", {255, 255, 255}},
    {"black", {0, 0, 0}},
    {"gray", {128, 128, 128}},
    {"red", {255, 0, 0}},
    {"green", {0, 128, 0}},
    {"blue", {0, 0, 255}},
    {"yellow", {255, 255, 0}},
    {"silver", {192, 192, 192}},
}};

struct ByteUnit {
    std::string_view suffix;
    double bytes;
};
constexpr std::array<ByteUnit, 4> byteUnits = {{{"k", 1e3}, {"K", 1e3}, {"M", 1e6}, {"", 1}}};
constexpr double highestByteCount = 1e15;

Failure mustBe(const std::string& what) { return {Reason::malformed, "must be " + what}; }

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

/// The colour in six hexadecimal digits.
std::optional<RGBColor> colorOfDigits(const std::string& digits) {
    std::uint32_t number = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number, 16);
    if (digits.size() != 6 || error != std::errc() || end != digits.data() + digits.size())
        return std::nullopt;
    return RGBColor{static_cast<std::uint8_t>(number >> 16), static_cast<std::uint8_t>(number >> 8),
                    static_cast<std::uint8_t>(number)};
}

} // namespace

Result<std::vector<std::uint32_t>> lengthsIn(const std::string& word) {
    if (auto lengths = numbersIn(word, std::uint32_t{1}, highestLength))
        return *std::move(lengths);
    return mustBe("a whole number from 1 to 1000000, or several with commas between them");
}

Result<std::vector<double>> percentagesIn(const std::string& word) {
    if (auto percentages = numbersIn(word, lowestPercentage, highestPercentage))
        return *std::move(percentages);
    return mustBe("a number from 0.001 to 100000, or several with commas between them");
}

Result<PixelBox> boxIn(const std::string& word) {
    const std::string_view view = word;
    const std::size_t cross = std::min(view.find('x'), view.size());
    const auto width = numberIn(view.substr(0, cross), std::uint32_t{1}, highestLength);
    const auto height =
        numberIn(view.substr(std::min(cross + 1, view.size())), std::uint32_t{1}, highestLength);
    if (width && height)
        return PixelBox{*width, *height};
    return mustBe("a width and a height in pixels, such as 1200x800");
}

Result<Gravity> gravityNamed(const std::string& word) {
    const auto* row = std::ranges::find(gravities, word, &NamedGravity::name);
    if (row != gravities.end())
        return row->gravity;
    return mustBe(gravityNames());
}

std::string gravityNames() {
    std::string names;
    for (const NamedGravity& row : gravities) {
        const bool isLast = &row == &gravities.back();
        names += (names.empty() ? "" : isLast ? " or " : ", ") + std::string(row.name);
    }
    return names;
}

Result<RGBColor> colorIn(const std::string& word) {
    const auto* row = std::ranges::find(colors, word, &NamedColor::name);
    if (row != colors.end())
        return row->color;
    std::string digits = word.starts_with('#') ? word.substr(1) : "";
    if (digits.size() == 3)
        digits = {digits[0], digits[0], digits[1], digits[1], digits[2], digits[2]};
    if (const auto color = colorOfDigits(digits))
        return *color;
    return mustBe("a colour such as #ffcc00, white, black, gray, red, green, blue, yellow or silver");
}

Result<std::uint64_t> bytesIn(const std::string& word) {
    for (const ByteUnit& unit : byteUnits) {
        if (!word.ends_with(unit.suffix))
            continue;
        const std::string_view number = std::string_view(word).substr(0, word.size() - unit.suffix.size());
        const auto count = numberIn(number, 0.0, highestByteCount / unit.bytes);
        if (count && *count * unit.bytes >= 1)
            return static_cast<std::uint64_t>(*count * unit.bytes);
        break;
    }
    return mustBe("a number of bytes, such as 200k or 2M (k is 1000, M is 1000000)");
}

Result<std::optional<ExifSelection>> metadataNamed(const std::string& word) {
    if (word == "none")
        return std::optional<ExifSelection>();
    if (word == "rights")
        return std::optional(ExifSelection::rights);
    if (word == "exif")
        return std::optional(ExifSelection::camera);
    if (word == "all")
        return std::optional(ExifSelection::all);
    return mustBe("none, rights, exif or all");
}

Result<Effort> effortNamed(const std::string& word) {
    if (word == "fast")
        return Effort::fast;
    if (word == "normal")
        return Effort::normal;
    if (word == "max")
        return Effort::max;
    return mustBe("fast, normal or max");
}

Result<TimesRule> timesNamed(const std::string& word) {
    if (word == "keep")
        return TimesRule::keep;
    if (word == "taken")
        return TimesRule::taken;
    if (word == "now")
        return TimesRule::now;
    return mustBe("keep, taken or now");
}

Result<bool> profileNamed(const std::string& word) {
    if (word == "keep" || word == "srgb")
        return word == "srgb";
    return mustBe("keep or srgb");
}

} // namespace kestrine
