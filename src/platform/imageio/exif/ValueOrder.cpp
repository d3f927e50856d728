#include "platform/imageio/exif/ValueOrder.h"

#include "platform/imageio/exif/ExifDirectory.h"
#include "platform/imageio/exif/ExifTags.h"

#include <algorithm>
#include <array>
#include <span>
#include <string_view>

namespace kestrine {

namespace {

/// An incomplete unit at the end stays.
void reverseUnits(std::span<std::uint8_t> value, std::size_t unit) {
    for (; unit > 1 && value.size() >= unit; value = value.subspan(unit))
        std::ranges::reverse(value.first(unit));
}

void exchangeInUndefined(std::uint16_t tag, std::span<std::uint8_t> value) {
    constexpr std::string_view unicode{"UNICODE\0", 8};
    constexpr std::array<std::uint16_t, 3> textTags{exiftag::userComment, exiftag::gpsProcessingMethod,
                                                    exiftag::gpsAreaInformation};
    constexpr std::size_t sidesBytes = 4;
    const bool isText = std::ranges::find(textTags, tag) != textTags.end();
    if (isText && value.size() > unicode.size() && std::equal(unicode.begin(), unicode.end(), value.begin()))
        reverseUnits(value.subspan(unicode.size()), 2); // UTF-16
    if (tag == exiftag::colorFilterPattern && value.size() >= sidesBytes)
        reverseUnits(value.first(sidesBytes), 2); // its width and height
}

} // namespace

void exchangeByteOrder(std::uint16_t tag, std::uint16_t type, Bytes& value) {
    const std::optional<ExifTypeSize> size = exifTypeSize(type);
    if (type == exifUndefined)
        exchangeInUndefined(tag, value);
    else if (size)
        reverseUnits(value, size->unit);
}

} // namespace kestrine
