// Resources: what the image resources of a PSD file say about its merged picture.
#pragma once

#include "platform/imageio/ForwardReader.h"
#include "platform/imageio/Resolution.h"

#include <optional>

namespace kestrine::psd {

struct Resources {
    Resolution resolution{};
    Bytes icc{};
    Bytes exif{}; ///< from the TIFF header on
    std::optional<std::uint8_t> transparentIndex{};
    bool hasMergedPicture = true; ///< otherwise the program that saved the file left it out
};

/// Reads the resources from the current position of `input` to `end`, which lies within the file. What cannot
/// be read is left out.
Resources readResources(ForwardReader& input, std::uint64_t end);

} // namespace kestrine::psd
