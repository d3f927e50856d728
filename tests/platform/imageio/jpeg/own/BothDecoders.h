// BothDecoders: decodes files with our own JPEG decoder and with libjpeg-turbo alone.
#pragma once

#include "platform/coregraphics/PixelBuffer.h"
#include "platform/imageio/jpeg/Decoder.h"

#include <gtest/gtest.h>

namespace kestrine::testing {

/// The picture, at `eighths` eighths of its size.
Result<PixelBuffer> decoded(const Bytes& file, jpeg::DecoderChoice choice, int eighths);

/// Whether both choices give the same picture, or both fail.
::testing::AssertionResult sameWithBoth(const Bytes& file, int eighths = 8);

/// The result of our own decoder alone: it refuses the header, fails at some row, or decodes the whole
/// picture.
enum class Outcome { refused, failed, decoded };
Outcome outcomeOf(const Bytes& file);

} // namespace kestrine::testing
