// Files through our own JPEG decoder and through the general library alone.
#pragma once

#include "platform/coregraphics/PixelBuffer.h"

#include <gtest/gtest.h>

namespace kestrine::testing {

/// What the codec gives, with our own decoder where that takes the file, and what it gives without.
Result<PixelBuffer> decodedByCodec(const Bytes& file, int eighths);
Result<PixelBuffer> decodedByLibrary(const Bytes& file, int eighths);

/// Whether both are the same picture, or both fail.
::testing::AssertionResult sameThroughBoth(const Bytes& file, int eighths = 8);

/// What becomes of a file in our own decoder alone: it starts or not, and comes to the last row or not.
enum class Outcome { refused, givenUp, taken };
Outcome outcomeOf(const Bytes& file);

} // namespace kestrine::testing
