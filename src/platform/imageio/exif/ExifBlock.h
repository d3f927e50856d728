// ExifBlock: reads the EXIF block of a source, in either byte order, and makes that of a JPEG file.
// ExifTagReader is a separate, simpler reader; it alone decides whether a picture is turned.
#pragma once

#include "platform/host/Bytes.h"
#include "platform/imageio/ImageCodec.h"

#include <optional>
#include <string>

namespace kestrine {

/// What a result keeps of the EXIF block of its source.
enum class ExifSelection : std::uint8_t {
    camera,       ///< what describes the picture and how it was taken
    withoutOwner, ///< the same without serial numbers and the name of the owner
    rights,       ///< artist and copyright, and the orientation
    all,          ///< also GPS data
};

/// What decoders use of a block. Missing and damaged entries are empty.
struct ExifFacts {
    std::optional<Resolution> resolution; ///< from XResolution, YResolution, ResolutionUnit of IFD0
    bool isAdobeRGB = false; ///< ColorSpace is 2, or uncalibrated with interoperability index "R03"
    int orientation = 1;     ///< 1 to 8; 1 also for other values
};

/// `block` begins with the TIFF header. Never fails; what cannot be read is empty.
ExifFacts readExifFacts(ByteView block);

/// The block with Orientation 1, for formats that store their own orientation. Everything else stays.
Bytes uprightExif(Bytes block);

/// When the picture was taken, as the camera wrote it: "2024:06:01 18:30:05". Empty if the block has no such
/// date, or no possible one.
std::string dateTakenIn(ByteView block);

/// The block for a JPEG file of width x height pixels, in big-endian order. By default it has
///  - from IFD0: description, make, model, orientation, software, date, artist and copyright;
///  - the Exif sub-IFD without MakerNote, and the interoperability IFD;
///  - PixelXDimension and PixelYDimension of the result, and Orientation 1 if it was `turned`;
///  - no GPS data and no thumbnail.
/// `selection` gives more or less of it. If the block is too large for a segment, the largest values are left
/// out. Empty if the source has nothing to copy.
Bytes carriedExif(ByteView block, std::uint32_t width, std::uint32_t height, bool turned,
                  ExifSelection selection = ExifSelection::camera);

/// Whether carriedExif() with `selection` keeps all that the block says. What describes only how the pixels
/// or the block are stored does not count; a thumbnail and a MakerNote do.
bool keepsWholeExif(ByteView block, ExifSelection selection);

} // namespace kestrine
