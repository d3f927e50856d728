// Filters and unfilters rows of PNG. A filtered byte is the difference to a prediction from the left pixel,
// the pixel above and the pixel above left. Vectorised, chosen at run time; every target gives the bytes of
// the plain loops in PNGFilters_reference.h. All rows must have pngRowMargin bytes before and after them;
// those before must be zero. The margin after a row that is written may change.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace kestrine::kernels {

/// The value is the byte stored before each row.
enum class PNGFilter : std::uint8_t { none, sub, up, average, paeth };
inline constexpr std::size_t pngFilters = 5;

inline constexpr std::size_t pngRowMargin = 64;

/// Unfilters a row of `count` bytes; `bytesPerPixel` is 1, 2, 3, 4, 6 or 8. `filtered` needs no margin before
/// it and 8 readable bytes after it.
void unfilterPNGRow(PNGFilter filter, std::size_t bytesPerPixel, const std::uint8_t* filtered,
                    const std::uint8_t* above, std::uint8_t* row, std::size_t count);

/// Consecutive rows with the paeth filter.
inline constexpr std::size_t paethRowsAtOnce = 4;
struct PaethRows {
    std::size_t rowCount = 0; ///< 1 to paethRowsAtOnce
    std::array<const std::uint8_t*, paethRowsAtOnce> filtered{};
    const std::uint8_t* above = nullptr; ///< the row above the first one
    std::array<std::uint8_t*, paethRowsAtOnce> rows{};
};

/// Unfilters all rows at once. This is faster than one by one because each pixel depends on the previous one.
void unfilterPaethRows(std::size_t bytesPerPixel, const PaethRows& job, std::size_t count);

/// For each filter, the sum of the absolute values of the filtered bytes, taken as numbers from -128 to 127.
/// A row with a smaller sum usually compresses better.
std::array<std::uint64_t, pngFilters> pngFilterSums(std::size_t bytesPerPixel, const std::uint8_t* row,
                                                    const std::uint8_t* above, std::size_t count);

/// Filters a row; `filtered` needs no margins.
void filterPNGRow(PNGFilter filter, std::size_t bytesPerPixel, const std::uint8_t* row,
                  const std::uint8_t* above, std::uint8_t* filtered, std::size_t count);

} // namespace kestrine::kernels
