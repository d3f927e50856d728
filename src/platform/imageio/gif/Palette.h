// Palette: up to 256 colours of a GIF, chosen from the picture or taken from a given table.
#pragma once

#include "platform/host/Bytes.h"
#include "platform/imageio/gif/Histogram.h"

#include <optional>
#include <vector>

namespace kestrine::gif {

struct Palette {
    std::vector<Color> colors;               ///< 1 to 256, including the transparent entry
    std::optional<std::uint8_t> transparent; ///< the index of transparent pixels
};

/// The colours of the picture if they fit, otherwise colours that represent them.
Palette paletteOfPicture(const Histogram& histogram, bool needsTransparency);

/// Exactly the colours of `table` (red, green, blue per colour). If transparency is needed, it gets an
/// additional entry or, if there are 256 already, replaces the entry that is used least.
Palette paletteOfTable(ByteView table, const Histogram& histogram, bool needsTransparency);

/// The index in the palette of the colour of each histogram entry, in order; empty if the palette lacks a
/// colour.
std::vector<std::uint8_t> exactIndices(const Palette& palette, const Histogram& histogram);

/// Whether `table` is a valid colour table: 1 to 256 complete colours.
bool isColorTable(ByteView table);

} // namespace kestrine::gif
