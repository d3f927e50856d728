// exifOrientation: the orientation by which pictures are turned upright.
#pragma once

#include "_MyClasses/Category/PictureFile.h"

namespace kestrine {

/// The EXIF orientation of a file; 0 when there is none or its value is not a number, and for a file whose
/// name ExifTagReader does not accept.
int exifOrientation(const PictureFile& file);

/// The question that exifOrientation() asks of a file with this path; null if it asks none.
FileQuestion orientationQuestionFor(const NSString& path);

} // namespace kestrine
