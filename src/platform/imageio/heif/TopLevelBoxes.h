// TopLevelBoxes: what a HEIF or AVIF file has beside the compressed pictures, read into memory.
#pragma once

#include "platform/imageio/Box.h"

namespace kestrine::heif {

/// "the HEIF or AVIF file is damaged: " and what is wrong.
Failure damagedFile(const std::string& what);

/// The content of a box at the top level, and where it lies in the file.
struct LoadedBox {
    Bytes content;
    std::uint64_t offset = 0;
};

struct TopLevelBoxes {
    std::optional<LoadedBox> meta; ///< still pictures
    std::optional<LoadedBox> moov; ///< image sequences
};

/// Reads the first box of each kind. A box may have 64 MiB. Boxes after a damaged one are ignored, because
/// many files end in the middle of a box that is not needed.
Result<TopLevelBoxes> readTopLevelBoxes(const ByteReader& reader);

/// The bytes of the ranges one after another. Fails with reason "truncated" if the file is shorter.
Result<Bytes> readRanges(const ByteReader& reader, const std::vector<FileRange>& ranges);

} // namespace kestrine::heif
