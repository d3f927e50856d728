// Pixels whose colour is stored multiplied by alpha.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace kestrine {

/// Divides the colour of pixels of `channels` samples, the last one alpha, by their alpha: rounded, limited
/// to the maximum. Where alpha is 0 the colour is 0.
void divideByAlpha(std::span<std::uint8_t> pixels, std::size_t channels);
void divideByAlpha(std::span<std::uint16_t> pixels, std::size_t channels);

} // namespace kestrine
