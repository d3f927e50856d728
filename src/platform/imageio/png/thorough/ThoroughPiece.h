// ThoroughPiece: compresses rows of a PNG picture as small as is affordable: with each of several ways to
// choose their filters, of which the best one is then compressed again with more effort.
#pragma once

#include "platform/imageio/png/fast/DeflatedPiece.h"

namespace kestrine::png {

/// How rows are stored.
struct StoredRowShape {
    std::size_t bytes = 0;         ///< of a row, without the number of its filter
    std::size_t bytesPerPixel = 1; ///< 1 if several pixels share a byte
};

/// Filters and compresses complete rows in stored byte order. The first one is filtered without the row
/// above, so that a piece depends on nothing else. More blocks can follow unless it `isLast`.
DeflatedPiece deflateThoroughly(ByteView rows, const StoredRowShape& shape, bool isLast);

} // namespace kestrine::png
