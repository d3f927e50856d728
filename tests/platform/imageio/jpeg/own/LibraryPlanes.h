// The planes of a JPEG as the general library stores them, to compare ours with.
#pragma once

#include "platform/host/Bytes.h"

namespace kestrine::testing {

struct LibraryPlane {
    unsigned width = 0, height = 0; ///< samples that count
    std::vector<Bytes> rows;        ///< at least `height`
};

/// Decoded to 8, 4, 2 or 1 `eighths`, neither expanded nor converted.
std::vector<LibraryPlane> libraryPlanes(const Bytes& file, int eighths);

} // namespace kestrine::testing
