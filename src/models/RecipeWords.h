// How the values of options that make a recipe are spelled. Failures have reason "malformed" and a message
// that follows the name of the option: "must be ...".
#pragma once

#include "models/ConversionRecipe.h"
#include "platform/host/Result.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace kestrine {

/// The longest side that can be asked for, in pixels.
inline constexpr std::uint32_t highestLength = 1'000'000;

/// Lengths in pixels: "480" or "480,960".
Result<std::vector<std::uint32_t>> lengthsIn(const std::string& word);

/// Percentages: "50" or "25,12.5".
Result<std::vector<double>> percentagesIn(const std::string& word);

struct PixelBox {
    std::uint32_t width, height;

    bool operator==(const PixelBox&) const = default;
};

/// Width and height in pixels: "1200x800".
Result<PixelBox> boxIn(const std::string& word);

/// A point of the compass, or "center".
Result<Gravity> gravityNamed(const std::string& word);

/// All of them in a sentence: "center, north, ... or northwest".
std::string gravityNames();

/// A colour: "white", "#ffffff" or "#fff".
Result<RGBColor> colorIn(const std::string& word);

/// A number of bytes: "200000", "200k" or "1.5M"; k is 1000 and M is 1000000.
Result<std::uint64_t> bytesIn(const std::string& word);

/// What is kept of the EXIF data; nullopt for "none".
Result<std::optional<ExifSelection>> metadataNamed(const std::string& word);

Result<Effort> effortNamed(const std::string& word);
Result<TimesRule> timesNamed(const std::string& word);

/// Whether the result is to be in sRGB.
Result<bool> profileNamed(const std::string& word);

} // namespace kestrine
