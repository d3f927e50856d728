// MatteRemoval: the colours of a merged picture with alpha are stored as drawn on white.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace kestrine::psd {

/// Gives the colours that, drawn on white with their alpha, look like the stored ones. `pixels` have
/// `channels` samples, the last one alpha; the largest sample is white, except for a and b of Lab, which have
/// half of it. Colours with an alpha of 0 stay as they are.
void removeWhite(std::span<std::uint8_t> pixels, std::size_t channels, bool isLab);
void removeWhite(std::span<std::uint16_t> pixels, std::size_t channels, bool isLab);

} // namespace kestrine::psd
