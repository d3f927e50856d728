// BaselineRows: the rows of a baseline JPEG by our own decoder, grey or RGB, sample by sample those of the
// general library with its usual smoothing of colour.
#pragma once

#include "platform/coregraphics/RowSource.h"
#include "platform/host/ByteReader.h"

namespace kestrine::jpeg {

/// Starts decoding to `eighths` (8, 4, 2 or 1). Fails with reason "refused", here or at any row, where the
/// file is not of the kind that it takes.
Result<RowSourcePointer> openBaselineRows(std::shared_ptr<const ByteReader> reader, int eighths);

} // namespace kestrine::jpeg
