// OutputFormats: the one table of the formats that are written.
#pragma once

#include "platform/imageio/ImageCodec.h"

#include <span>
#include <string_view>

namespace kestrine {

/// Also the place of a format in the table. Stored presets hold these numbers.
enum class FileType : std::uint8_t { jpeg, png, tiff, gif };

struct OutputFormat {
    FileType type;
    std::string_view name;      ///< the word for it in options and JSON, ASCII
    std::string_view title;     ///< what people call it, ASCII
    std::string_view extension; ///< of its files, without the dot, ASCII
    bool holdsAlpha = false;    ///< else pictures are laid on white
    bool holds16Bits = false;   ///< else samples are rounded to 8 bits
    bool isSRGBOnly = false;    ///< whether viewers take it as sRGB, whatever the file says
    bool hasQuality = false;    ///< whether the encoder uses EncodingOptions::quality
    bool holdsExif = false;     ///< whether the encoder writes EncodingOptions::exif
    /// Consumes all rows, which suit the format, and returns the bytes of the file.
    Result<Bytes> (*encode)(RowSource& rows, const EncodingOptions& options);
};

/// All of them, in the order of FileType.
std::span<const OutputFormat> outputFormats();

const OutputFormat& outputFormat(FileType type);

/// The format with that number; null for a number that no format has.
const OutputFormat* outputFormatNumbered(std::int32_t number);

} // namespace kestrine
