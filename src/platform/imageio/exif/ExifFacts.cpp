#include "platform/imageio/exif/ExifFacts.h"

#include "platform/imageio/exif/ExifDirectory.h"
#include "platform/imageio/exif/ExifTags.h"

#include <algorithm>
#include <array>
#include <span>
#include <string_view>

namespace kestrine {

namespace {

constexpr std::array<std::uint16_t, 4> originTags{exiftag::make, exiftag::model, exiftag::artist,
                                                  exiftag::copyright};
constexpr double unitNone = 1;
constexpr double unitCentimetre = 3;
constexpr double adobeRGB = 2;
constexpr double uncalibrated = 0xffff;

std::optional<Resolution> resolutionOf(const ExifDirectories& source, const ExifDirectory& main) {
    const auto horizontal = source.number(main, exiftag::xResolution);
    const auto vertical = source.number(main, exiftag::yResolution);
    const double unit = source.number(main, exiftag::resolutionUnit).value_or(2);
    if (unit == unitNone || (!horizontal && !vertical))
        return std::nullopt;
    const double toInches = unit == unitCentimetre ? centimetresPerInch : 1;
    return plausibleResolution(horizontal.value_or(0) * toInches, vertical.value_or(0) * toInches);
}

bool saysAdobeRGB(const ExifDirectories& source, const ExifDirectory& exif) {
    const auto space = source.number(exif, exiftag::colorSpace);
    if (space != uncalibrated)
        return space == adobeRGB;
    const ExifDirectory interoperability = source.child(exif, exiftag::interoperabilityPointer);
    const auto index = interoperability.find(exiftag::interoperabilityIndex);
    if (index == interoperability.end() || index->second.type != exifText)
        return false;
    constexpr std::string_view optionalFile = "R03";
    const ByteView text = index->second.value;
    return text.size() >= 3 && std::equal(optionalFile.begin(), optionalFile.end(), text.begin());
}

int orientationOf(const ExifDirectories& source, const ExifDirectory& main) {
    const double value = source.number(main, exiftag::orientation).value_or(1);
    return value >= 1 && value <= 8 ? static_cast<int>(value) : 1;
}

/// Whether a string has the form "2024:06:01 18:30:05".
bool isDate(std::string_view text) {
    constexpr std::string_view form = "0000:00:00 00:00:00";
    return std::ranges::equal(
        text, form, [](char c, char place) { return place == '0' ? c >= '0' && c <= '9' : c == place; });
}

/// The string in an entry, up to its zero byte; empty if it is not a date.
std::string dateIn(const ExifDirectory& directory, std::uint16_t tag) {
    const auto entry = directory.find(tag);
    if (entry == directory.end() || entry->second.type != exifText)
        return "";
    const ByteView value = entry->second.value;
    const std::string text(value.begin(), std::ranges::find(value, std::uint8_t{0}));
    return isDate(text) && !text.starts_with("0000") ? text : "";
}

} // namespace

ExifFacts readExifFacts(ByteView block) {
    ExifFacts facts;
    const auto source = ExifDirectories::of(block);
    if (!source)
        return facts;
    const ExifDirectory main = source->main();
    facts.resolution = resolutionOf(*source, main);
    facts.orientation = orientationOf(*source, main);
    const ExifDirectory exif = source->child(main, exiftag::exifDirectoryPointer);
    facts.isAdobeRGB = saysAdobeRGB(*source, exif);
    facts.saysOrigin = !exif.empty() || std::ranges::any_of(originTags, [&](std::uint16_t tag) {
        return main.contains(tag);
    });
    return facts;
}

Bytes withOrientation(Bytes block, int orientation) {
    const auto source = ExifDirectories::of(block);
    if (!source)
        return block;
    const ExifDirectory main = source->main();
    const auto entry = main.find(exiftag::orientation);
    if (entry == main.end() || entry->second.value.empty())
        return block;
    const ByteView value = entry->second.value;
    const std::size_t unit = exifTypeSize(entry->second.type)->unit;
    const std::span<std::uint8_t> first =
        std::span(block).subspan(static_cast<std::size_t>(value.data() - block.data()), unit);
    std::ranges::fill(first, std::uint8_t{0});
    (source->isBigEndian() ? first.back() : first.front()) = static_cast<std::uint8_t>(orientation);
    return block;
}

std::string dateTakenIn(ByteView block) {
    const auto source = ExifDirectories::of(block);
    if (!source)
        return "";
    const ExifDirectory exif = source->child(source->main(), exiftag::exifDirectoryPointer);
    const std::string original = dateIn(exif, exiftag::dateTimeOriginal);
    return original.empty() ? dateIn(exif, exiftag::dateTimeDigitized) : original;
}

} // namespace kestrine
