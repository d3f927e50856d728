// ConvertPictureSigns: recognises files that look like pictures although no decoder of ours reads them. They
// must be reported, otherwise users would believe that they were converted.
#pragma once

#include "platform/host/Bytes.h"

#include <cstddef>
#include <string>

namespace kestrine {

/// The number of bytes at the start of a file that isForeignPicture() needs.
inline constexpr std::size_t pictureSignLength = 32;

/// Whether the file's name has the extension of a picture ("IMG_1.HEIC").
bool hasNameOfPicture(const std::string& path);

/// Whether a file that begins with `head` is compressed with gzip: a drawing or anything else, which only the
/// file name shows.
bool isCompressedFile(ByteView head);

/// Whether a file that begins with `head` is a picture in one of the formats that are known but not read.
bool isForeignPicture(ByteView head);

} // namespace kestrine
