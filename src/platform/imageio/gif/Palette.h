// Palette: the at most 256 colours of a GIF, chosen from the picture or taken from a given table.
#pragma once

#include "platform/host/Bytes.h"
#include "platform/imageio/gif/Histogram.h"

#include <optional>
#include <vector>

namespace kestrine::gif {

struct Palette {
    std::vector<Color> colors;            ///< 1 to 256, the transparent entry included
    std::optional<std::uint8_t> transparent; ///< the index that shows nothing
};

/// The picture's own colours when they fit, else those that represent it best.
Palette paletteOfPicture(const Histogram& histogram, bool needsTransparency);

/// Exactly the colours of `table` (red, green, blue a colour). Where transparency is needed, an entry is
/// added or, when there are 256 already, takes the place of the one that the picture needs least.
Palette paletteOfTable(ByteView table, const Histogram& histogram, bool needsTransparency);

/// For each of the histogram's entries, in their order, the index of its colour; empty when the picture has a
/// colour that the palette has not.
std::vector<std::uint8_t> exactIndices(const Palette& palette, const Histogram& histogram);

/// Whether `table` is one: 1 to 256 whole colours.
bool isColorTable(ByteView table);

} // namespace kestrine::gif
