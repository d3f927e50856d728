// ExifBlock: reads the EXIF block of a source, in either byte order, and makes that of a JPEG file.
// ExifTagReader is a separate, simpler reader; it alone decides whether a picture is turned.
#pragma once

#include "platform/host/Bytes.h"
#include "platform/imageio/ImageCodec.h"

#include <optional>

namespace kestrine {

/// What decoders use of a block. Missing and damaged entries are empty.
struct ExifFacts {
    std::optional<Resolution> resolution; ///< from XResolution, YResolution, ResolutionUnit of IFD0
    bool isAdobeRGB = false; ///< ColorSpace is 2, or uncalibrated with interoperability index "R03"
};

/// `block` begins with the TIFF header. Never fails; what cannot be read is empty.
ExifFacts readExifFacts(ByteView block);

/// The block with Orientation 1 if it has an orientation: for formats that store the orientation outside of
/// it.
Bytes uprightExif(Bytes block);

/// The block for a JPEG file of width x height pixels, in big-endian order. It has
///  - from IFD0: description, make, model, orientation, software, date, artist and copyright;
///  - the Exif sub-IFD without MakerNote, and the interoperability IFD;
///  - PixelXDimension and PixelYDimension of the result, and Orientation 1 if it was `turned`;
///  - no GPS data and no thumbnail.
/// If the block is too large for a segment, the largest values are left out. Empty if the source has nothing
/// to copy.
Bytes carriedExif(ByteView block, std::uint32_t width, std::uint32_t height, bool turned);

} // namespace kestrine
