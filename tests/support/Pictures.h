// Small pictures for tests, and a comparison that reports differences.
#pragma once

#include "platform/coregraphics/PixelBuffer.h"

#include <functional>
#include <gtest/gtest.h>

namespace kestrine::testing {

/// A picture with the samples sample(x, y, channel), from 0 to 255 or, for 16 bits, to 65535.
PixelBuffer
makePicture(const RowFormat& format,
            const std::function<unsigned(std::uint32_t x, std::uint32_t y, std::size_t channel)>& sample);

/// Smooth colour gradients with some texture. Compresses like a photograph, and no two areas are equal.
PixelBuffer makePhoto(const RowFormat& format);

/// One sample of a picture.
unsigned sampleAt(const PixelBuffer& picture, std::uint32_t x, std::uint32_t y, std::size_t channel);

/// Succeeds if both have the same format and no sample differs by more than `tolerance`. Otherwise the
/// message has the first and the largest difference.
::testing::AssertionResult samePicture(const PixelBuffer& actual, const PixelBuffer& expected,
                                       unsigned tolerance = 0);

} // namespace kestrine::testing
