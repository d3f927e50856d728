// Plain loops with the results of PNGFilters.h, as a reference for the vectorised functions.
#pragma once

#include "platform/imageio/png/kernels/PNGFilters.h"

namespace kestrine::kernels::reference {

/// The filter's prediction from the bytes of the left pixel, the pixel above and the pixel above left.
std::uint8_t predictedByte(PNGFilter filter, int left, int above, int aboveLeft);

void unfilterPNGRow(PNGFilter filter, std::size_t bytesPerPixel, const std::uint8_t* filtered,
                    const std::uint8_t* above, std::uint8_t* row, std::size_t count);
void unfilterPaethRows(std::size_t bytesPerPixel, const PaethRows& job, std::size_t count);
std::array<std::uint64_t, pngFilters> pngFilterSums(std::size_t bytesPerPixel, const std::uint8_t* row,
                                                    const std::uint8_t* above, std::size_t count);
void filterPNGRow(PNGFilter filter, std::size_t bytesPerPixel, const std::uint8_t* row,
                  const std::uint8_t* above, std::uint8_t* filtered, std::size_t count);

} // namespace kestrine::kernels::reference
