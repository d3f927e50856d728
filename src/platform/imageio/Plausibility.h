// Plausibility: whether a file is long enough for the picture that it claims to hold.
#pragma once

#include "platform/imageio/ImageCodec.h"

namespace kestrine {

/// A header is easy to forge, but decoding takes time and memory for every claimed pixel. So a picture whose
/// packed rows have more than 2^28 bytes needs a file with one byte for every 2048 of them. This is less than
/// what LZW makes of a single colour; deflate cannot shrink data by more than 1032. Fails with reason
/// "implausible".
Result<void> checkPlausible(const FrameDescription& frame, std::uint64_t fileBytes);

/// The same rule for any packed rows, such as those of all the parts of a picture.
bool isPlausible(std::uint64_t packedBytes, std::uint64_t fileBytes);

/// Whether decoded pixels should be kept to save decoding them again: those of a small file that claims to be
/// large are decoded quickly, but would fill the memory.
bool isWorthKeeping(const RowFormat& pixels, std::uint64_t fileBytes);

} // namespace kestrine
