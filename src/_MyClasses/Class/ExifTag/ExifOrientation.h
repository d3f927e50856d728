// exifOrientation: the orientation by which pictures are turned upright.
#pragma once

#include "_MyClasses/Category/PictureFile.h"

namespace kestrine {

/// The EXIF orientation of a file; 0 when there is none or its value is not a number, and for a file whose
/// name ExifTagReader does not accept.
int exifOrientation(const PictureFile& file);

} // namespace kestrine
