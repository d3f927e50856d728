// GIFColorClusters: few colours that stand for many.
#pragma once

#include "platform/imageio/GIFHistogram.h"

namespace kestrine {

/// At most `count` colours from which those of `entries` differ as little as possible, squared and weighted
/// by their pixels. Depends on nothing but the arguments.
std::vector<GIFColor> representativeColors(std::span<const GIFHistogram::Entry> entries, std::size_t count);

} // namespace kestrine
