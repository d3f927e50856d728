// OutputFormats: the table of the output formats.
#pragma once

#include "platform/imageio/Encoder.h"
#include "platform/imageio/exif/CarriedExif.h"

#include <array>
#include <span>
#include <string_view>

namespace kestrine {

/// Also the position of a format in the table. Presets know the first four and store these numbers.
enum class FileType : std::uint8_t { jpeg, png, tiff, gif, webp, jxl, avif };
inline constexpr FileType lastFileType = FileType::avif;

struct OutputFormat {
    FileType type;
    std::string_view name;                                ///< its name in options and JSON, ASCII
    std::string_view title;                               ///< its usual name, that of its codec, ASCII
    std::string_view extension;                           ///< of its files, without the dot, ASCII
    std::array<std::string_view, 3> otherExtensions = {}; ///< in use for such files; unused ones are empty
    bool holdsAlpha = false;                              ///< otherwise pictures are drawn on white
    bool holds16Bits = false;                             ///< otherwise samples are rounded to 8 bits
    bool isSRGBOnly = false;                              ///< whether viewers always assume sRGB
    bool holdsGray = true;                                ///< otherwise grey pictures become sRGB
    std::uint32_t longestSide = maximumSide;              ///< in pixels
    bool hasProgressive = false; ///< whether the encoder uses EncodingOptions::isProgressive
    /// Bytes of memory per pixel that the encoder needs (measured), indexed by Effort; 0 if it streams.
    std::array<std::uint64_t, 3> heldBytesPerPixel = {};
    bool hasLossless = false;     ///< whether the encoder uses EncodingOptions::isLossless
    bool hasEffort = false;       ///< whether the encoder uses EncodingOptions::effort
    bool hasQuality = false;      ///< whether the encoder uses EncodingOptions::quality
    bool holdsExif = false;       ///< whether the encoder writes EncodingOptions::exif
    bool hasExifOfPresets = true; ///< else it gets no EXIF data where presets say what is kept
    /// Opens the libraries of the encoder that are not linked. Null if there are none.
    void (*openLibraries)() = nullptr;
    Encoder encode;
};

/// All formats, in the order of FileType.
std::span<const OutputFormat> outputFormats();

const OutputFormat& outputFormat(FileType type);

/// Fails if a result of this size, in pixels, is not possible in this format or in any.
Result<void> checkSize(std::uint64_t width, std::uint64_t height, const OutputFormat& format);

/// One bit if the encoder has libraries to open, else 0; for openLibraries().
std::uint32_t librariesOf(const OutputFormat& format);

/// Whether files of the format get EXIF data of this selection. `camera` is what presets keep.
bool holdsExif(const OutputFormat& format, ExifSelection selection);

/// The formats that presets know.
std::span<const OutputFormat> presetFormats();

/// Whether files of the format have this extension, in upper or lower case.
bool hasExtension(const OutputFormat& format, std::string_view extension);

/// The names of formats in a sentence: "jpeg, png, tiff or gif".
std::string formatNames(std::span<const OutputFormat> formats);

/// The one of `formats` that has this name or extension, in upper or lower case; null if there is none.
const OutputFormat* formatNamed(std::string_view name, std::span<const OutputFormat> formats);

/// The one that files of this codec have; null if it is not written, or if `codec` is null.
const OutputFormat* formatOf(const ImageCodec* codec);

/// The one of presetFormats() with that number; null if there is none.
const OutputFormat* outputFormatNumbered(std::int32_t number);

} // namespace kestrine
