// LayerSummary: what the layers of a PSD file say about its merged picture.
#pragma once

#include "platform/imageio/ForwardReader.h"

namespace kestrine::psd {

struct LayerSummary {
    std::uint32_t count = 0;
    /// The first plane after the colours of the merged picture is its alpha. Otherwise it is a channel that
    /// the user made, such as a stored selection.
    bool hasMergedAlpha = false;
};

/// Reads the section of layers, from the current position of `input` to `end`. What cannot be read is left
/// out.
LayerSummary readLayers(ForwardReader& input, std::uint64_t end, bool isLarge);

} // namespace kestrine::psd
