// Container: what the boxes around a JPEG 2000 codestream say about its components.
#pragma once

#include "platform/host/Bytes.h"
#include "platform/host/Result.h"
#include "platform/host/files/ByteReader.h"

#include <memory>
#include <optional>
#include <vector>

namespace kestrine::jp2 {

/// The numbers of colour spaces in the file.
enum class NamedSpace : std::uint32_t {
    cmyk = 12,
    lab = 14,
    sRGB = 16,
    gray = 17,
    yCbCr = 18,
    extendedYCbCr = 24
};

/// A channel is a component, or what a palette makes of it.
struct Channel {
    std::uint32_t component = 0;
    std::optional<std::uint32_t> column; ///< of the palette
};

/// What a channel is for.
struct ChannelUse {
    std::uint32_t channel = 0;
    std::uint32_t type = 0;  ///< 0 colour, 1 alpha, 2 alpha by which colour is multiplied
    std::uint32_t color = 0; ///< which colour, from 1 on; 0 for the whole picture
};

struct Palette {
    std::vector<unsigned> bits;                      ///< of each column
    std::vector<std::vector<std::uint32_t>> columns; ///< each with the same number of entries
};

struct Container {
    std::optional<std::uint32_t> space; ///< a NamedSpace, or another number
    Bytes icc;
    Palette palette;               ///< without columns if there is none
    std::vector<Channel> channels; ///< only with a palette
    std::vector<ChannelUse> uses;  ///< empty if the file does not say it
};

/// Reads the boxes before the codestream. A file without boxes has an empty container.
Result<Container> readContainer(const ByteReader& reader);

/// The codestream in a file, with or without boxes. OpenJPEG gets nothing else, because it applies palettes
/// and the order of channels to single tiles even if it is asked not to.
Result<std::shared_ptr<const ByteReader>> codestreamIn(std::shared_ptr<const ByteReader> file);

} // namespace kestrine::jp2
