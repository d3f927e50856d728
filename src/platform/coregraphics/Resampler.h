// The resampling stage: rows in, scaled rows out.
#pragma once

#include "platform/coregraphics/FilterWeights.h"
#include "platform/coregraphics/RowSource.h"
#include "platform/coregraphics/SampleConversion.h"

namespace kestrine {

/// How to resample a picture; plain data.
struct Resampling {
    AxisMap x;
    AxisMap y;
    ResampleFilter filter = ResampleFilter::triangle;
    Light light = Light::stored;

    bool operator==(const Resampling&) const = default;
};

/// `input` resampled to resampling.x.outSize x resampling.y.outSize pixels of `outDepth`; `profile` (its own,
/// null for sRGB) is only read during the call.
RowSourcePointer resampledRows(RowSourcePointer input, const Resampling& resampling,
                               const ColorProfile* profile, SampleDepth outDepth);

} // namespace kestrine
