// RowStages: small steps between decoder and encoder. Each takes a RowSource and returns one.
#pragma once

#include "platform/coregraphics/ColorProfile.h"
#include "platform/coregraphics/RGBColor.h"
#include "platform/coregraphics/RowSource.h"

#include <array>

namespace kestrine {

/// One sample per channel without alpha, of the depth of the rows.
using ColorSamples = std::array<std::uint16_t, 3>;

/// The samples of `color` for rows of this format and profile; null stands for sRGB. The colour must be grey
/// for rows in grey.
ColorSamples samplesOf(const RGBColor& color, const RowFormat& format, const ColorProfile* profile);

/// Draws the picture on a background and removes alpha. Rows without alpha are returned unchanged.
RowSourcePointer rowsOnBackground(RowSourcePointer input, const ColorSamples& background);
/// The same on white.
RowSourcePointer rowsOnWhite(RowSourcePointer input);

/// Adds opaque margins, in pixels.
struct Margins {
    std::uint32_t left = 0, top = 0, right = 0, bottom = 0;

    bool operator==(const Margins&) const = default;
};
RowSourcePointer rowsWithMargins(RowSourcePointer input, const Margins& margins, const ColorSamples& color);

/// Exchanges left and right.
RowSourcePointer mirroredRows(RowSourcePointer input);

/// Multiplies alpha by `fraction`, 0 to 1, and rounds it. Rows without alpha count as opaque. Where alpha
/// becomes 0, the colour becomes 0.
RowSourcePointer rowsFaded(RowSourcePointer input, float fraction);

/// Rounds 16-bit samples to 8 bits. 8-bit rows are returned unchanged.
RowSourcePointer rowsOf8Bits(RowSourcePointer input);

/// Rotates clockwise by 0 to 3 quarter turns. Holds the whole picture in memory unless the number is 0.
RowSourcePointer turnedRows(RowSourcePointer input, int quarterTurns);

} // namespace kestrine
