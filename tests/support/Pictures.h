// Small pictures for tests, and comparing pictures with a useful message.
#pragma once

#include "platform/coregraphics/PixelBuffer.h"

#include <functional>
#include <gtest/gtest.h>

namespace kestrine::testing {

/// A picture whose sample (x, y, channel) is what `sample` says (0..255, or 0..65535 for 16 bits).
PixelBuffer
makePicture(const RowFormat& format,
            const std::function<unsigned(std::uint32_t x, std::uint32_t y, std::size_t channel)>& sample);

/// Smooth colour gradients with some texture: compresses like a photograph, differs at every place.
PixelBuffer makePhoto(const RowFormat& format);

/// One sample of a picture.
unsigned sampleAt(const PixelBuffer& picture, std::uint32_t x, std::uint32_t y, std::size_t channel);

/// Succeeds when both have the same format and no sample differs by more than `tolerance`; else names the
/// first difference and the largest one.
::testing::AssertionResult samePicture(const PixelBuffer& actual, const PixelBuffer& expected,
                                       unsigned tolerance = 0);

} // namespace kestrine::testing
