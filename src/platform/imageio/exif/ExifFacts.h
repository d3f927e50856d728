// ExifFacts: the values that decoders and users need from the EXIF block of a source, in either byte order.
// ExifTagReader is a separate, simpler reader; it alone decides whether presets turn a picture.
#pragma once

#include "platform/host/Bytes.h"
#include "platform/imageio/Resolution.h"

#include <optional>
#include <string>
#include <utility>

namespace kestrine {

/// The values that decoders use. Missing and damaged entries are empty.
struct ExifFacts {
    std::optional<Resolution> resolution; ///< from XResolution, YResolution, ResolutionUnit of IFD0
    bool isAdobeRGB = false; ///< ColorSpace is 2, or uncalibrated with interoperability index "R03"
    int orientation = 1;     ///< 1 to 8; 1 also for other values
    bool saysOrigin = false; ///< there is an Exif directory, or a make, model, artist or copyright
};

/// `block` begins with the TIFF header. Never fails; what cannot be read is empty.
ExifFacts readExifFacts(ByteView block);

/// The block with this orientation (1 to 8) if it has one. Everything else stays.
Bytes withOrientation(Bytes block, int orientation);

/// The block with Orientation 1, for formats that store their own orientation.
inline Bytes uprightExif(Bytes block) { return withOrientation(std::move(block), 1); }

/// When the picture was taken, as the camera wrote it: "2024:06:01 18:30:05". Empty if the block has no valid
/// date.
std::string dateTakenIn(ByteView block);

} // namespace kestrine
