// Resampler: scales rows.
#pragma once

#include "platform/coregraphics/FilterWeights.h"
#include "platform/coregraphics/RowSource.h"
#include "platform/coregraphics/SampleConversion.h"

namespace kestrine {

/// How to resample a picture.
struct Resampling {
    AxisMap x;
    AxisMap y;
    ResampleFilter filter = ResampleFilter::triangle;
    Light light = Light::stored;

    bool operator==(const Resampling&) const = default;
};

/// `input` resampled to resampling.x.outSize x resampling.y.outSize pixels with `outDepth`. `profile` is that
/// of `input`, null for sRGB; it is used only during the call.
RowSourcePointer resampledRows(RowSourcePointer input, const Resampling& resampling,
                               const ColorProfile* profile, SampleDepth outDepth);

} // namespace kestrine
