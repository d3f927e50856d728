// BothDecoders: decodes files with our own JPEG decoder and with libjpeg-turbo alone.
#pragma once

#include "platform/coregraphics/PixelBuffer.h"
#include "platform/coregraphics/RowSource.h"
#include "platform/imageio/jpeg/Decoder.h"
#include "platform/imageio/jpeg/own/FrameHeader.h"

#include <gtest/gtest.h>

namespace kestrine::testing {

/// The picture, at 1 / 2^`halvings` of its size.
Result<PixelBuffer> decoded(const Bytes& file, jpeg::DecoderChoice choice, int halvings);

/// The header, if our own decoder supports it.
Result<jpeg::FrameHeader> ownHeader(std::shared_ptr<const ByteReader> reader);

/// The rows of our own decoder alone.
Result<RowSourcePointer> ownRows(std::shared_ptr<const ByteReader> reader, int eighths);

/// Whether both choices give the same picture, or both fail.
::testing::AssertionResult sameWithBoth(const Bytes& file, int halvings = 0);

/// Whether both choices report the same damage, or none.
::testing::AssertionResult sameDamageWithBoth(const Bytes& file, int halvings = 0);

/// The result of our own decoder alone: it refuses the header, fails at some row, or decodes the whole
/// picture.
enum class Outcome { refused, failed, decoded };
Outcome outcomeOf(const Bytes& file);

} // namespace kestrine::testing
