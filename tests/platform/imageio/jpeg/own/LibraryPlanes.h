// LibraryPlanes: the planes of a JPEG as libjpeg-turbo decodes them, for comparison with ours.
#pragma once

#include "platform/host/Bytes.h"

namespace kestrine::testing {

struct LibraryPlane {
    unsigned width = 0, height = 0; ///< in samples, without padding
    std::vector<Bytes> rows;        ///< at least `height`
};

/// Decoded at 8, 4, 2 or 1 `eighths`, neither expanded nor converted.
std::vector<LibraryPlane> libraryPlanes(const Bytes& file, int eighths);

} // namespace kestrine::testing
