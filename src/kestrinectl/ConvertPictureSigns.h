// ConvertPictureSigns: what in a folder looks like a picture although no decoder of ours takes it, so that
// nobody believes it was converted.
#pragma once

#include "platform/host/Bytes.h"

#include <cstddef>
#include <string>

namespace kestrine {

/// How many bytes from the start of a file decide.
inline constexpr std::size_t pictureSignLength = 32;

/// Whether the file's name ends like that of a picture ("IMG_1.HEIC").
bool hasNameOfPicture(const std::string& path);

/// Whether a file that begins with `head` is a picture in one of the formats that are known but not read.
bool isForeignPicture(ByteView head);

} // namespace kestrine
