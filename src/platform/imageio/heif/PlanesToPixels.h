// PlanesToPixels: converts the planes of a decoded picture to rows of grey or RGB pixels.
#pragma once

#include "platform/coregraphics/RowFormat.h"
#include "platform/imageio/heif/CodedPicture.h"

#include <vector>

namespace kestrine::heif {

/// Computes in single precision and rounds to nearest. Chroma with half the columns or rows is interpolated
/// between the centres of its samples (weights 3/4 and 1/4), which is where encoders of still pictures put
/// them. One thread at a time.
class PlanesToPixels {
public:
    /// `points` give matrix and range; nullopt takes those of the planes. Only model, depth and alpha of
    /// `layout` are used. The planes must outlive this. Fails for matrices that are not supported.
    static Result<PlanesToPixels> create(const DecodedPlanes& planes,
                                         const std::optional<CodingPoints>& points, const RowFormat& layout);

    /// Row `y` of the picture into `row`; alpha is opaque. `width` pixels from the left.
    void convert(std::uint32_t y, std::uint32_t width, std::uint8_t* row);

private:
    PlanesToPixels(const DecodedPlanes& planes, const RowFormat& layout) : planes_(planes), layout_(layout) {}

    void loadBrightness(std::uint32_t y, std::uint32_t width);
    void loadChroma(std::size_t number, std::uint32_t y, std::uint32_t width);
    template <class Sample>
    void store(std::uint32_t width, Sample* row);

    DecodedPlanes planes_;
    RowFormat layout_;
    /// Red, green and blue in stored units: sum over the planes of factor * sample, and an offset.
    std::array<std::array<float, 3>, 3> factors_{};
    std::array<float, 3> offsets_{};
    std::array<std::vector<float>, 3> samples_; ///< a row of each plane, at the full number of columns
    std::vector<float> halfRow_;                ///< a row of chroma, before columns are interpolated
    std::array<std::vector<float>, 3> colors_;
};

} // namespace kestrine::heif
