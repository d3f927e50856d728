// CarriedExif: the EXIF block that a result gets from that of its source.
#pragma once

#include "platform/host/Bytes.h"

#include <cstdint>

namespace kestrine {

/// What a result keeps of the EXIF block of its source.
enum class ExifSelection : std::uint8_t {
    camera,       ///< what describes the picture and how it was taken
    withoutOwner, ///< the same without serial numbers and the name of the owner
    rights,       ///< artist and copyright, and the orientation
    all,          ///< also GPS data
};

/// Properties of a result that its block must agree with.
struct ExifResult {
    std::uint32_t width, height; ///< in pixels; 0 keeps the values of the block
    bool isTurned = false;       ///< its pixels are upright
    bool isResized = false;      ///< it is scaled, cut or has margins
    bool isInSRGB = false;       ///< its colours were converted to sRGB
};

/// The block for a file, in big-endian order. By default it has
///  - from IFD0: description, make, model, orientation, software, date, artist and copyright;
///  - the Exif sub-IFD without MakerNote, and the interoperability IFD;
///  - PixelXDimension and PixelYDimension of the result, and Orientation 1 if it `isTurned`;
///  - no GPS data and no thumbnail.
/// `selection` gives more or less of it. Except for `camera`, the place of the subject and the size of the
/// sensor's pixels are left out when they are no longer right. If the block is too large for a JPEG segment,
/// the largest values are left out. Empty if the source has nothing to copy.
Bytes carriedExif(ByteView block, const ExifResult& result, ExifSelection selection = ExifSelection::camera);

/// Whether carriedExif() with `selection` keeps all data of the block. Entries that only describe how the
/// pixels or the block are stored do not count; a thumbnail, a MakerNote and unreadable entries do.
bool keepsWholeExif(ByteView block, ExifSelection selection);

} // namespace kestrine
