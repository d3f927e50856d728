// ToneMapping: shows pictures of high dynamic range (HDR) as ordinary ones.
#pragma once

#include "platform/coregraphics/RowSource.h"

#include <cstdint>

namespace kestrine::heif {

enum class HDRTransfer : std::uint8_t {
    pq,  ///< absolute light up to 10000 cd/m2 (SMPTE ST 2084)
    hlg, ///< light relative to the display (ITU-R BT.2100), which is one of 1000 cd/m2 here
};

/// The peak that is assumed when the file does not state one, in cd/m2.
inline constexpr double usualPeak = 1000;

/// `rows`, which have 16 bits, with the tone curve of sRGB and the same primaries. White becomes
/// 203 cd/m2. Brighter light, up to `peak` cd/m2, is compressed by the curve (EETF) of ITU-R BT.2390, which
/// is applied to the largest of red, green and blue; the others keep their proportion to it, and with that
/// the hue. Light above the peak becomes white. Alpha stays.
RowSourcePointer rowsInSDR(RowSourcePointer rows, HDRTransfer transfer, double peak);

} // namespace kestrine::heif
