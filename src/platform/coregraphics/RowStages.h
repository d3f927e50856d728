// The small stages of the pipeline: each wraps a RowSource and is one.
#pragma once

#include "platform/coregraphics/RowSource.h"

namespace kestrine {

/// Lays the picture on white and drops its alpha: what is clear becomes white. Rows without alpha pass
/// unchanged.
RowSourcePointer rowsOnWhite(RowSourcePointer input);

/// Alpha times `fraction`, 0 to 1, rounded; rows without alpha get one. What has no alpha left has no colour.
RowSourcePointer rowsFaded(RowSourcePointer input, float fraction);

/// 16-bit samples rounded to 8 bits. 8-bit rows pass unchanged.
RowSourcePointer rowsOf8Bits(RowSourcePointer input);

/// Turned clockwise by a number of quarter turns, 0 to 3. Holds the whole picture unless that number is 0.
RowSourcePointer turnedRows(RowSourcePointer input, int quarterTurns);

} // namespace kestrine
