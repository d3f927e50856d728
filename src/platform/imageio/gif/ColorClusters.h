// ColorClusters: few colours that stand for many.
#pragma once

#include "platform/imageio/gif/Histogram.h"

namespace kestrine::gif {

/// At most `count` colours from which those of `entries` differ as little as possible, squared and weighted
/// by their pixels. Depends on nothing but the arguments.
std::vector<Color> representativeColors(std::span<const Histogram::Entry> entries, std::size_t count);

} // namespace kestrine::gif
