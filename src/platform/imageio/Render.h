// Render: the one way from a Picture to bytes or pixels.
#pragma once

#include "platform/imageio/OutputFormats.h"
#include "platform/imageio/Picture.h"

namespace kestrine {

/// What to make of a picture. `options.exif` is the source's whole EXIF block here: what is carried, and
/// brought up to date, is decided while rendering.
struct Output {
    FileType type;
    EncodingOptions options;
};

/// The finished file. Any thread; several at once if their pictures have different sources or keep pixels.
Result<Bytes> render(const Picture& picture, const Output& output);

/// The picture's pixels, in its format().
Result<PixelBuffer> readPixels(const Picture& picture);

/// A picture's steps put into the order in which rows can flow: all resampling and flattening in the source's
/// own orientation, and one turn at the end.
struct RowPlan {
    std::vector<PictureStep> steps; ///< no QuarterTurn among them
    int quarterTurns = 0;           ///< clockwise, 0 to 3

    bool operator==(const RowPlan&) const = default;
};
RowPlan planRows(const Picture& picture);

/// The smallest of 1, 2, 4, 8 eighths at which `resampling` may take its source: what is left to the filter
/// must be a reduction by at least 2.35 (lanczos: 52 dB to a full decode) or 2 (triangle) along the axis that
/// is reduced least.
int decodingEighths(const Resampling& resampling);

} // namespace kestrine
