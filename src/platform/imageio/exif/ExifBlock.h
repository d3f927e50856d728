// ExifBlock: the EXIF of a source as far as the encoder needs it, in either byte order.
// (ExifTagReader is another, deliberately narrow reader, and alone decides turning.)
#pragma once

#include "platform/host/Bytes.h"
#include "platform/imageio/ImageCodec.h"

#include <optional>

namespace kestrine {

/// What decoders want to know of a block; absent or broken entries are empty.
struct ExifFacts {
    std::optional<Resolution> resolution; ///< from XResolution, YResolution, ResolutionUnit of IFD0
    bool isAdobeRGB = false;              ///< ColorSpace 2, or uncalibrated with interoperability index "R03"
};

/// `block` begins with the TIFF header. Never fails: what cannot be read is absent.
ExifFacts readExifFacts(ByteView block);

/// The block to put into an output JPEG of width x height pixels: big-endian; the Exif sub-IFD without
/// MakerNote, interoperability, and from IFD0 description, make, model, software, dates, artist, copyright;
/// no GPS, no thumbnail; PixelXDimension and PixelYDimension set to the output's; Orientation 1 when
/// `turned`, else as in the source. What would not fit a segment goes, largest value first. Empty when the
/// source block holds nothing to carry.
Bytes carriedExif(ByteView block, std::uint32_t width, std::uint32_t height, bool turned);

} // namespace kestrine
