// exifOrientation: the orientation by which pictures are turned upright.
#pragma once

#include "_MyClasses/Category/PictureFile.h"

namespace kestrine {

/// Asks for the orientation: one byte, the EXIF number, or 0 when there is none or its value is not a number.
/// It is nullptr for a file whose name ExifTagReader does not accept.
FileQuestion orientationQuestion(const NSString& path);

/// The EXIF orientation of a file; 0 when there is none or its value is not a number.
int exifOrientation(const PictureFile& file);

} // namespace kestrine
