// The row filters of PNG, both ways. A filtered byte is the difference to a prediction from the pixel to the
// left, the one above and the one above that to the left. Vectorised, chosen at run time; every target gives
// the bytes of the plain loops of PNGFilters_reference.h. Rows here have pngRowMargin bytes before and behind
// them, those before being zero. What lies in the margin behind a row that is written may change.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace kestrine::kernels {

/// As stored before each row.
enum class PNGFilter : std::uint8_t { none, sub, up, average, paeth };
inline constexpr std::size_t pngFilters = 5;

inline constexpr std::size_t pngRowMargin = 64;

/// Takes the filter off a row of `count` bytes with 1, 2, 3, 4, 6 or 8 of them a pixel. `filtered` needs no
/// margin before it and 8 readable bytes behind it.
void unfilterPNGRow(PNGFilter filter, std::size_t bytesPerPixel, const std::uint8_t* filtered,
                    const std::uint8_t* above, std::uint8_t* row, std::size_t count);

/// Up to four rows with the paeth filter that follow each other.
inline constexpr std::size_t paethRowsAtOnce = 4;
struct PaethRows {
    std::size_t rowCount = 0; ///< 1 to paethRowsAtOnce
    std::array<const std::uint8_t*, paethRowsAtOnce> filtered{};
    const std::uint8_t* above = nullptr; ///< the row above the first one
    std::array<std::uint8_t*, paethRowsAtOnce> rows{};
};

/// Takes their filters off, which is faster than one by one, as each pixel has to wait for its neighbours.
void unfilterPaethRows(std::size_t bytesPerPixel, const PaethRows& job, std::size_t count);

/// For each filter, the sum of what it leaves of the row: each byte as a number from -128 to 127, without its
/// sign. The less, the better the row compresses, as a rule.
std::array<std::uint64_t, pngFilters> pngFilterSums(std::size_t bytesPerPixel, const std::uint8_t* row,
                                                    const std::uint8_t* above, std::size_t count);

/// Filters a row; `filtered` needs no margins.
void filterPNGRow(PNGFilter filter, std::size_t bytesPerPixel, const std::uint8_t* row,
                  const std::uint8_t* above, std::uint8_t* filtered, std::size_t count);

} // namespace kestrine::kernels
