// The tags of TIFF 6.0 and its supplements that say how the pixels of a page are stored. Those that EXIF has,
// too, are in exif/ExifTags.h.
#pragma once

#include <cstdint>

namespace kestrine::tiff::tag {

enum Tag : std::uint16_t {
    imageWidth = 256,
    imageLength = 257,
    bitsPerSample = 258,
    compression = 259,
    photometricInterpretation = 262,
    stripOffsets = 273,
    samplesPerPixel = 277,
    rowsPerStrip = 278,
    stripByteCounts = 279,
    planarConfiguration = 284,
    subDirectories = 330,
    extraSamples = 338,
    jpegOffset = 513,
    jpegLength = 514,
    iccProfile = 34675,
};

} // namespace kestrine::tiff::tag
