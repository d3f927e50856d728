// Premultiplication: undoes the multiplication of colour by alpha.
#pragma once

#include "platform/coregraphics/RowFormat.h"

#include <cstddef>
#include <cstdint>
#include <span>

namespace kestrine {

/// Divides the colour of pixels of `format`, which has alpha, by their alpha: rounded, limited to the
/// maximum. Where alpha is 0 the colour becomes 0.
void undoPremultiplication(const RowFormat& format, std::span<std::uint8_t> pixels);

/// The same for pixels of any number of samples, the last one alpha.
void undoPremultiplication(std::size_t channels, std::span<std::uint8_t> samples);
void undoPremultiplication(std::size_t channels, std::span<std::uint16_t> samples);

} // namespace kestrine
