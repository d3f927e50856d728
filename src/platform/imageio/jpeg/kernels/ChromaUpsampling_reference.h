// Plain loops with the results of ChromaUpsampling.h, as a reference for the vectorised functions.
#pragma once

#include <cstddef>
#include <cstdint>

namespace kestrine::kernels::reference {

void upsampleH2V1Fancy(const std::uint8_t* row, std::size_t width, std::uint8_t* result);
void upsampleH2V2Fancy(const std::uint8_t* nearRow, const std::uint8_t* farRow, std::size_t width,
                       std::uint8_t* result);
void upsampleH1V2Fancy(const std::uint8_t* nearRow, const std::uint8_t* farRow, bool isUpper,
                       std::size_t width, std::uint8_t* result);

} // namespace kestrine::kernels::reference
