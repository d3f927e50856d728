// PictureCount: how many pictures a GIF file holds.
#pragma once

#include "platform/host/files/ByteReader.h"

#include <memory>

namespace kestrine::gif {

/// Reads the structure of the whole file, without its codes. Pictures after damage do not count.
std::uint32_t countPictures(std::shared_ptr<const ByteReader> reader);

} // namespace kestrine::gif
