#include "models/RecipeDigest.h"

#include <charconv>

namespace kestrine {

namespace {

/// Collects values, each preceded by its length in bytes, so that different sequences never give the same
/// string.
class RecipeText {
public:
    RecipeText& operator<<(const std::string& value) {
        text_ += std::to_string(value.size()) + ":" + value;
        return *this;
    }
    RecipeText& operator<<(double value) {
        char digits[64];
        return *this << std::string(digits, std::to_chars(digits, digits + sizeof digits, value).ptr);
    }
    RecipeText& operator<<(const NSString& value) { return *this << value.utf8(); }
    RecipeText& operator<<(const RGBColor& value) {
        const auto& [red, green, blue] = value;
        return *this << red << green << blue;
    }
    RecipeText& operator<<(const Gravity& value) {
        const auto& [x, y] = value;
        return *this << x << y;
    }
    RecipeText& operator<<(const Unscaled&) { return *this; }
    RecipeText& operator<<(const PointSize& value) {
        const auto& [width, height] = value;
        return *this << width << height;
    }
    RecipeText& operator<<(const PointRatio& value) {
        const auto& [ratio] = value;
        return *this << ratio;
    }
    RecipeText& operator<<(const PointLongest& value) {
        const auto& [length] = value;
        return *this << length;
    }
    RecipeText& operator<<(const PixelSize& value) {
        const auto& [rule, width, height, gravity, padding] = value;
        return *this << number(rule) << width << height << gravity << padding;
    }
    RecipeText& operator<<(const SizeRule& value) {
        *this << static_cast<double>(value.index());
        return std::visit([this](const auto& rule) -> RecipeText& { return *this << rule; }, value);
    }
    RecipeText& operator<<(const FormatRule& value) {
        const auto& [choice, type] = value;
        return *this << number(choice) << number(type);
    }
    RecipeText& operator<<(const NameTemplate& value) { return *this << value.text(); }
    RecipeText& operator<<(const ResultPlace& value) {
        const auto& [replaces, isReturned, base, subfolder, keepsTree, name, keepsExtension, setName] = value;
        return *this << replaces << isReturned << base << subfolder << keepsTree << name << keepsExtension
                     << setName;
    }
    RecipeText& operator<<(const ExifSelection& value) { return *this << number(value); }
    template <class T>
    RecipeText& operator<<(const std::optional<T>& value) {
        *this << static_cast<double>(value.has_value());
        return value ? *this << *value : *this;
    }
    // A field that is added to a recipe must be added here; the compiler says so.
    RecipeText& operator<<(const ConversionRecipe& recipe) {
        const auto& [size, enlarges, usesLanczos, convertsResolution, upright, background, intoSRGB, format,
                     quality, isLossless, isProgressive, effort, exif, maxBytes, times, copiesFitting,
                     place] = recipe;
        *this << size << enlarges << usesLanczos << convertsResolution << number(upright) << background
              << intoSRGB;
        *this << format << quality << isLossless << isProgressive << number(effort) << exif
              << static_cast<double>(maxBytes);
        return *this << number(times) << copiesFitting << place;
    }

    std::string text() && { return std::move(text_); }

private:
    template <class Enumeration>
    static double number(Enumeration value) {
        return static_cast<double>(value);
    }

    std::string text_;
};

} // namespace

std::string textOf(const ConversionRecipes& recipes) {
    RecipeText text;
    for (const ConversionRecipe& recipe : recipes)
        text << recipe;
    return std::move(text).text();
}

} // namespace kestrine
