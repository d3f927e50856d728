// ToneMapping: converts HDR pictures to SDR.
#pragma once

#include "platform/coregraphics/CodingPoints.h"
#include "platform/coregraphics/RowSource.h"

#include <cstdint>
#include <optional>

namespace kestrine {

enum class HDRTransfer : std::uint8_t {
    pq,  ///< absolute light up to 10000 cd/m2 (SMPTE ST 2084)
    hlg, ///< light relative to the display (ITU-R BT.2100), here 1000 cd/m2
};

/// The peak that is assumed when the file does not state one, in cd/m2.
inline constexpr double defaultPeak = 1000;

/// How an HDR picture is stored.
struct HDREncoding {
    HDRTransfer transfer = HDRTransfer::pq;
    double peak = defaultPeak; ///< cd/m2
};

/// nullopt for SDR pictures. `brightestLight` is the value that the file states, in cd/m2; 0 if it states
/// none.
std::optional<HDREncoding> hdrEncodingOf(const CodingPoints& points, double brightestLight);

/// `rows` with the tone curve of sRGB and the same primaries. White is 203 cd/m2. Light up to the peak is
/// compressed by the curve (EETF) of ITU-R BT.2390, which is applied to the largest of red, green and blue.
/// The others keep their ratio to it, so that the hue stays. Light above the peak becomes white. Alpha does
/// not change.
RowSourcePointer rowsInSDR(RowSourcePointer rows, const HDREncoding& range);

} // namespace kestrine
