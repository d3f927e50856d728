// ColorClusters: chooses a few colours that represent many.
#pragma once

#include "platform/imageio/gif/Histogram.h"

namespace kestrine::gif {

/// At most `count` colours with small squared differences to the colours of `entries`, weighted by their
/// numbers of pixels. Deterministic.
std::vector<Color> representativeColors(std::span<const Histogram::Entry> entries, std::size_t count);

} // namespace kestrine::gif
