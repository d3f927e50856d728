// ExifFile: the EXIF data of one file, for people.
#pragma once

#include "_MyClasses/Class/ExifTag/ExifTagReader.h"

#include <memory>

namespace kestrine {

/// Which EXIF data counts.
enum class ExifReach : bool {
    narrow, ///< what decides whether presets turn a picture: see ExifTagReader
    all,    ///< either byte order, every place and format
};

/// A reader of the file's tags. nil if there are none within reach; failures to read the file are noted. With
/// ExifReach::narrow, a reader may find no tags.
std::unique_ptr<ExifTagReader> exifReaderOf(const NSString& path, ExifReach reach);

} // namespace kestrine
