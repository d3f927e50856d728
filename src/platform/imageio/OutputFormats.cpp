#include "platform/imageio/OutputFormats.h"

#include "platform/imageio/Codecs.h"

#include <iterator>

namespace kestrine {

namespace {

constexpr OutputFormat outputFormatTable[] = {
    {.type = FileType::jpeg,
     .name = "jpeg",
     .title = "JPEG",
     .extension = "jpg",
     .otherExtensions = {"jpeg", "jpe", "jfif"},
     .hasQuality = true,
     .holdsExif = true,
     .encode = jpeg::encode},
    {.type = FileType::png,
     .name = "png",
     .title = "PNG",
     .extension = "png",
     .holdsAlpha = true,
     .holds16Bits = true,
     .encode = png::encode},
    {.type = FileType::tiff,
     .name = "tiff",
     .title = "TIFF",
     .extension = "tiff",
     .otherExtensions = {"tif"},
     .holdsAlpha = true,
     .holds16Bits = true,
     .encode = tiff::encode},
    {.type = FileType::gif,
     .name = "gif",
     .title = "GIF",
     .extension = "gif",
     .holdsAlpha = true,
     .isSRGBOnly = true,
     .encode = gif::encode},
};

constexpr bool isInOrder() {
    for (std::size_t i = 0; i < std::size(outputFormatTable); ++i)
        if (outputFormatTable[i].type != static_cast<FileType>(i))
            return false;
    return true;
}
static_assert(isInOrder());

} // namespace

std::span<const OutputFormat> outputFormats() { return outputFormatTable; }

const OutputFormat& outputFormat(FileType type) { return outputFormatTable[static_cast<std::size_t>(type)]; }

const OutputFormat* outputFormatNumbered(std::int32_t number) {
    const bool isKnown = number >= 0 && number < std::ssize(outputFormatTable);
    return isKnown ? &outputFormatTable[static_cast<std::size_t>(number)] : nullptr;
}

} // namespace kestrine
