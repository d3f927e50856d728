// RowStages: small steps between decoder and encoder. Each takes a RowSource and returns one.
#pragma once

#include "platform/coregraphics/RowSource.h"

namespace kestrine {

/// Draws the picture on white and removes alpha. Rows without alpha are returned unchanged.
RowSourcePointer rowsOnWhite(RowSourcePointer input);

/// Multiplies alpha by `fraction`, 0 to 1, and rounds it. Rows without alpha count as opaque. Where alpha
/// becomes 0, the colour becomes 0.
RowSourcePointer rowsFaded(RowSourcePointer input, float fraction);

/// Rounds 16-bit samples to 8 bits. 8-bit rows are returned unchanged.
RowSourcePointer rowsOf8Bits(RowSourcePointer input);

/// Rotates clockwise by 0 to 3 quarter turns. Holds the whole picture in memory unless the number is 0.
RowSourcePointer turnedRows(RowSourcePointer input, int quarterTurns);

} // namespace kestrine
