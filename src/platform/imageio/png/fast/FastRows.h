// Fast decoding of the usual kinds of PNG files: ISA-L inflates, vectorised kernels unfilter. libpng alone
// decides whether a file is valid: it reads the header and the chunks after the pixels, and if anything in
// the pixels is unexpected, libpng decodes the file again from the start. So the result is always that of
// libpng.
#pragma once

#include "platform/coregraphics/RowSource.h"
#include "platform/imageio/DamageRecord.h"
#include "platform/imageio/png/LibraryReader.h"

namespace kestrine::png {

/// The rows of `file`, whose header has been read from `reader`. Null for kinds of files that are left to
/// libpng, or if ISA-L is not installed.
RowSourcePointer openFastRows(const LibraryReader& file, std::shared_ptr<const ByteReader> reader,
                              std::shared_ptr<DamageRecord> damage);

} // namespace kestrine::png
