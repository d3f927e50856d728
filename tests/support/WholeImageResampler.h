// The plain truth of resampling: whole pictures, double precision, no tables. Slow and obvious.
#pragma once

#include "platform/coregraphics/PixelBuffer.h"
#include "platform/coregraphics/Resampler.h"
#include "platform/coregraphics/ToneCurve.h"

namespace kestrine::testing {

/// What resampledRows() gives for `source`, whose channels have these tone curves (not looked at for
/// Light::stored).
PixelBuffer resampledWhole(const PixelBuffer& source, const Resampling& resampling, const ToneCurve& curve,
                           SampleDepth outDepth);

} // namespace kestrine::testing
