// ToneMapping: shows pictures of high dynamic range (HDR) as ordinary ones.
#pragma once

#include "platform/coregraphics/CodingPoints.h"
#include "platform/coregraphics/RowSource.h"

#include <cstdint>
#include <optional>

namespace kestrine {

enum class HDRTransfer : std::uint8_t {
    pq,  ///< absolute light up to 10000 cd/m2 (SMPTE ST 2084)
    hlg, ///< light relative to the display (ITU-R BT.2100), which is one of 1000 cd/m2 here
};

/// The peak that is assumed when the file does not state one, in cd/m2.
inline constexpr double usualPeak = 1000;

/// How pictures of high dynamic range are stored.
struct HighRange {
    HDRTransfer transfer = HDRTransfer::pq;
    double peak = usualPeak; ///< cd/m2
};

/// nullopt for pictures of the ordinary range. `brightestLight` is what the file states, in cd/m2; 0:
/// nothing.
std::optional<HighRange> highRangeOf(const CodingPoints& points, double brightestLight);

/// `rows` with the tone curve of sRGB and the same primaries. White becomes
/// 203 cd/m2. Brighter light, up to the peak, is compressed by the curve (EETF) of ITU-R BT.2390, which
/// is applied to the largest of red, green and blue; the others keep their proportion to it, and with that
/// the hue. Light above the peak becomes white. Alpha stays.
RowSourcePointer rowsInSDR(RowSourcePointer rows, const HighRange& range);

} // namespace kestrine
