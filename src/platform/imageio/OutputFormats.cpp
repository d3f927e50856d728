#include "platform/imageio/OutputFormats.h"

#include "platform/imageio/Codecs.h"

#include <algorithm>
#include <iterator>

namespace kestrine {

namespace {

constexpr OutputFormat outputFormatTable[] = {
    {.type = FileType::jpeg,
     .name = "jpeg",
     .title = "JPEG",
     .extension = "jpg",
     .otherExtensions = {"jpeg", "jpe", "jfif"},
     .longestSide = 65500, // of libjpeg
     .hasProgressive = true,
     .hasQuality = true,
     .holdsExif = true,
     .encode = jpeg::encode},
    {.type = FileType::png,
     .name = "png",
     .title = "PNG",
     .extension = "png",
     .holdsAlpha = true,
     .holds16Bits = true,
     .heldBytesPerPixel = {0, 0, 1},
     .hasEffort = true,
     .holdsExif = true,
     .hasExifOfPresets = false,
     .encode = png::encode},
    {.type = FileType::tiff,
     .name = "tiff",
     .title = "TIFF",
     .extension = "tiff",
     .otherExtensions = {"tif"},
     .holdsAlpha = true,
     .holds16Bits = true,
     .holdsExif = true,
     .hasExifOfPresets = false,
     .encode = tiff::encode},
    {.type = FileType::gif,
     .name = "gif",
     .title = "GIF",
     .extension = "gif",
     .holdsAlpha = true,
     .isSRGBOnly = true,
     .longestSide = 65535,
     .encode = gif::encode},
    {.type = FileType::webp,
     .name = "webp",
     .title = "WebP",
     .extension = "webp",
     .holdsAlpha = true,
     .holdsGray = false,
     .longestSide = 16383,
     .heldBytesPerPixel = {38, 38, 42},
     .hasLossless = true,
     .hasEffort = true,
     .hasQuality = true,
     .holdsExif = true,
     .openLibraries = [] { webp::codec.openLibraries(); },
     .encode = webp::encode},
    {.type = FileType::jxl,
     .name = "jxl",
     .title = "JPEG XL",
     .extension = "jxl",
     .holdsAlpha = true,
     .holds16Bits = true,
     .heldBytesPerPixel = {72, 72, 95},
     .hasLossless = true,
     .hasEffort = true,
     .hasQuality = true,
     .holdsExif = true,
     .openLibraries = [] { jxl::codec.openLibraries(); },
     .encode = jxl::encode},
    {.type = FileType::avif,
     .name = "avif",
     .title = "AVIF",
     .extension = "avif",
     .holdsAlpha = true,
     .holds16Bits = true,
     .longestSide = 65536, // of AV1
     .heldBytesPerPixel = {42, 42, 58},
     .hasLossless = true,
     .hasEffort = true,
     .hasQuality = true,
     .holdsExif = true,
     .openLibraries = avif::openLibraries,
     .encode = avif::encode},
};

constexpr bool isInOrder() {
    for (std::size_t i = 0; i < std::size(outputFormatTable); ++i)
        if (outputFormatTable[i].type != static_cast<FileType>(i))
            return false;
    return std::size(outputFormatTable) == static_cast<std::size_t>(lastFileType) + 1;
}
static_assert(isInOrder());

std::string lowerCase(std::string_view word) {
    std::string lower;
    for (const char c : word)
        lower += c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    return lower;
}

} // namespace

std::span<const OutputFormat> outputFormats() { return outputFormatTable; }

const OutputFormat& outputFormat(FileType type) { return outputFormatTable[static_cast<std::size_t>(type)]; }

Result<void> checkSize(std::uint64_t width, std::uint64_t height, const OutputFormat& format) {
    TRY(checkSize(width, height));
    if (std::max(width, height) > format.longestSide)
        return Failure{Reason::tooLarge, std::string(format.title) + " pictures have at most "
                                             + std::to_string(format.longestSide) + " pixels on a side"};
    return {};
}

bool holdsExif(const OutputFormat& format, ExifSelection selection) {
    return format.holdsExif && (format.hasExifOfPresets || selection != ExifSelection::camera);
}

std::span<const OutputFormat> presetFormats() {
    return outputFormats().first(static_cast<std::size_t>(FileType::gif) + 1);
}

bool hasExtension(const OutputFormat& format, std::string_view extension) {
    const std::string lower = lowerCase(extension);
    return !lower.empty()
           && (lower == format.extension
               || std::ranges::find(format.otherExtensions, lower) != format.otherExtensions.end());
}

std::string formatNames(std::span<const OutputFormat> formats) {
    std::string names(formats.front().name);
    for (const OutputFormat& format : formats.subspan(1)) {
        names += &format == &formats.back() ? " or " : ", ";
        names += format.name;
    }
    return names;
}

const OutputFormat* formatNamed(std::string_view name, std::span<const OutputFormat> formats) {
    const std::string lower = lowerCase(name);
    const auto found = std::ranges::find_if(formats, [&](const OutputFormat& format) {
        return lower == format.name || hasExtension(format, lower);
    });
    return found == formats.end() ? nullptr : &*found;
}

const OutputFormat* formatOf(const ImageCodec* codec) {
    const auto found =
        std::ranges::find(outputFormats(), codec == nullptr ? "" : codec->name, &OutputFormat::title);
    return found == outputFormats().end() ? nullptr : &*found;
}

const OutputFormat* outputFormatNumbered(std::int32_t number) {
    const bool isKnown = number >= 0 && number < std::ssize(presetFormats());
    return isKnown ? &outputFormatTable[static_cast<std::size_t>(number)] : nullptr;
}

} // namespace kestrine
