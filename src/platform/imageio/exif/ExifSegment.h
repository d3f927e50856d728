// ExifSegment: the mark before the EXIF block in a JPEG segment, which some writers also put into other
// files.
#pragma once

#include "platform/host/Bytes.h"

#include <algorithm>
#include <string_view>

namespace kestrine {

inline constexpr std::string_view exifSegmentMark("Exif\0\0", 6);

inline bool hasExifSegmentMark(ByteView bytes) {
    return bytes.size() >= exifSegmentMark.size()
           && std::equal(exifSegmentMark.begin(), exifSegmentMark.end(), bytes.begin());
}

/// The block from the TIFF header on.
inline Bytes withoutExifSegmentMark(Bytes block) {
    if (hasExifSegmentMark(block))
        block.erase(block.begin(), block.begin() + exifSegmentMark.size());
    return block;
}

} // namespace kestrine
