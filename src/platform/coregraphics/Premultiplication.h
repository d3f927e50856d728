// Premultiplication: undoes the multiplication of colour by alpha.
#pragma once

#include "platform/coregraphics/RowFormat.h"

#include <span>

namespace kestrine {

/// Divides the colour of pixels of `format`, which has alpha, by their alpha. Where alpha is 0, colour stays.
void undoPremultiplication(const RowFormat& format, std::span<std::uint8_t> pixels);

} // namespace kestrine
