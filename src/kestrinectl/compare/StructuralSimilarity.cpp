#include "kestrinectl/compare/StructuralSimilarity.h"

#include <array>
#include <cmath>

namespace kestrine {

namespace {

constexpr double windowDeviation = 1.5;
constexpr std::uint32_t windowRadius = similarityWindow / 2;
constexpr double luminanceConstant = (0.01 * 255) * (0.01 * 255); // (K1 L)^2
constexpr double contrastConstant = (0.03 * 255) * (0.03 * 255);  // (K2 L)^2

using WindowWeights = std::array<double, similarityWindow>;

/// The Gaussian along one axis; the window is its product with itself. The sum is 1.
WindowWeights windowWeights() {
    WindowWeights weights{};
    double sum = 0;
    for (std::size_t i = 0; i < weights.size(); ++i) {
        const double distance = static_cast<double>(i) - windowRadius;
        weights[i] = std::exp(-distance * distance / (2 * windowDeviation * windowDeviation));
        sum += weights[i];
    }
    for (double& weight : weights)
        weight /= sum;
    return weights;
}

/// What is averaged in each window.
enum Moment : std::size_t { meanA, meanB, squareA, squareB, product, momentCount };
using MomentRow = std::array<std::vector<double>, momentCount>;

MomentRow rowOf(std::size_t length) {
    MomentRow row;
    row.fill(std::vector<double>(length));
    return row;
}

/// Goes down two pictures of the same size. The window is separable: first along the rows, then down the
/// columns of the last eleven filtered rows.
class SimilarityScan {
public:
    SimilarityScan(const LumaPlane& a, const LumaPlane& b)
        : a_(a), b_(b), positions_(a.width - similarityWindow + 1), pixels_(rowOf(a.width)),
          sums_(rowOf(positions_)), loss_(a.width, a.height) {
        filtered_.fill(rowOf(positions_));
    }

    Similarity similarity() {
        double sum = 0;
        for (std::uint32_t y = 0; y < a_.height; ++y) {
            filterRow(y);
            if (y + 1 >= similarityWindow)
                sum += sumEndingAt(y);
        }
        const double count = static_cast<double>(positions_) * (a_.height - similarityWindow + 1);
        return {sum / count, std::move(loss_)};
    }

private:
    void filterRow(std::uint32_t y) {
        const float *a = a_.row(y), *b = b_.row(y);
        for (std::size_t x = 0; x < a_.width; ++x) {
            const double first = a[x], second = b[x];
            pixels_[meanA][x] = first;
            pixels_[meanB][x] = second;
            pixels_[squareA][x] = first * first;
            pixels_[squareB][x] = second * second;
            pixels_[product][x] = first * second;
        }
        for (std::size_t moment = 0; moment < momentCount; ++moment) {
            std::vector<double>& filtered = filtered_[y % similarityWindow][moment];
            filtered.assign(positions_, 0);
            for (std::size_t i = 0; i < similarityWindow; ++i)
                addWeighted(filtered, pixels_[moment].data() + i, weights_[i]);
        }
    }

    /// The sum of the similarity in all windows whose last row is `y`.
    double sumEndingAt(std::uint32_t y) {
        for (std::size_t moment = 0; moment < momentCount; ++moment) {
            sums_[moment].assign(positions_, 0);
            for (std::size_t i = 0; i < similarityWindow; ++i)
                addWeighted(sums_[moment], filtered_[(y + 1 + i) % similarityWindow][moment].data(),
                            weights_[i]);
        }
        double sum = 0;
        for (std::uint32_t x = 0; x < positions_; ++x) {
            const double similarity = similarityAt(x);
            sum += similarity;
            loss_.ofPixel(x + windowRadius, y - windowRadius) += 1 - similarity;
        }
        return sum;
    }

    static void addWeighted(std::vector<double>& sums, const double* values, double weight) {
        for (std::size_t x = 0; x < sums.size(); ++x)
            sums[x] += weight * values[x];
    }

    double similarityAt(std::size_t x) const {
        const double a = sums_[meanA][x], b = sums_[meanB][x];
        const double varianceA = sums_[squareA][x] - a * a, varianceB = sums_[squareB][x] - b * b;
        const double covariance = sums_[product][x] - a * b;
        return (2 * a * b + luminanceConstant) * (2 * covariance + contrastConstant)
               / ((a * a + b * b + luminanceConstant) * (varianceA + varianceB + contrastConstant));
    }

    const WindowWeights weights_ = windowWeights();
    const LumaPlane &a_, &b_;
    const std::size_t positions_; ///< of the window along a row
    MomentRow pixels_;            ///< of one row of the pictures
    std::array<MomentRow, similarityWindow> filtered_;
    MomentRow sums_;
    CellSums loss_;
};

} // namespace

std::optional<Similarity> structuralSimilarity(const LumaPlane& a, const LumaPlane& b) {
    if (a.width != b.width || a.height != b.height || a.width < similarityWindow
        || a.height < similarityWindow)
        return std::nullopt;
    return SimilarityScan(a, b).similarity();
}

} // namespace kestrine
