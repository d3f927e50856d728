// FilterWeights: the source pixels and their weights for every result pixel along one axis.
#pragma once

#include "platform/coregraphics/AxisMap.h"
#include "platform/coregraphics/kernels/ResampleRows.h"

#include <cstddef>
#include <span>
#include <vector>

namespace kestrine {

enum class ResampleFilter : std::uint8_t {
    lanczos,  ///< three lobes, widened for reductions
    triangle, ///< linear interpolation, widened for reductions
};

class FilterWeights {
public:
    /// `sourceSize` >= 1. Weights are computed in double precision and stored in single precision. Source
    /// pixels outside the source are left out, and the weights of each result sum to 1.
    FilterWeights(ResampleFilter filter, const AxisMap& map, std::uint32_t sourceSize);

    std::uint32_t outSize() const { return static_cast<std::uint32_t>(first_.size()); }
    /// The first source pixel of result pixel i; never decreases with i.
    std::uint32_t first(std::uint32_t i) const { return first_[i]; }
    /// The weights of the source pixels from first(i) on; at least one.
    std::span<const float> weights(std::uint32_t i) const {
        return std::span(weights_).subspan(start_[i], start_[i + 1] - start_[i]);
    }
    kernels::PixelWeights kernelWeights() const { return {first_, start_, weights_.data()}; }
    /// One past the last source pixel of result pixel i; never decreases with i.
    std::uint32_t end(std::uint32_t i) const {
        return first_[i] + static_cast<std::uint32_t>(weights(i).size());
    }

    /// The weight of source pixel `source` in result pixel i; 0 if it is not used.
    float weightOf(std::uint32_t source, std::uint32_t i) const {
        return source < first(i) || source >= end(i) ? 0.0F : weights(i)[source - first(i)];
    }

private:
    std::vector<std::uint32_t> first_;
    std::vector<std::size_t> start_;
    std::vector<float> weights_;
};

} // namespace kestrine
