// The reference implementation of resampling: whole pictures in double precision without tables. Simple and
// slow.
#pragma once

#include "platform/coregraphics/PixelBuffer.h"
#include "platform/coregraphics/Resampler.h"
#include "platform/coregraphics/ToneCurve.h"

namespace kestrine::testing {

/// The expected result of resampledRows() for `source`. `curve` is the tone curve of its channels;
/// Light::stored does not use it.
PixelBuffer resampledWhole(const PixelBuffer& source, const Resampling& resampling, const ToneCurve& curve,
                           SampleDepth outDepth);

} // namespace kestrine::testing
