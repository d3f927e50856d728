// The pixels of the usual PNG files, read the fast way: ISA-L inflates, vectors take the filters off.
// libpng stays the judge: it has read the header, it looks at what follows the pixels, and where anything
// between is odd, it reads the picture from the start, so that a file gives here what it gives there.
#pragma once

#include "platform/coregraphics/RowSource.h"
#include "platform/imageio/png/LibraryReader.h"

namespace kestrine::png {

/// The rows of `file`, whose header has been read from `reader`; null for a kind that only libpng reads, or
/// where ISA-L is missing.
RowSourcePointer openFastRows(const LibraryReader& file, std::shared_ptr<const ByteReader> reader);

} // namespace kestrine::png
