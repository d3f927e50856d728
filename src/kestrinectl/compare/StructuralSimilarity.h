// StructuralSimilarity: how similar two pictures look (SSIM).
// Z. Wang, A. C. Bovik, H. R. Sheikh, E. P. Simoncelli: Image quality assessment: from error visibility to
// structural similarity. IEEE Transactions on Image Processing 13 (2004), 600-612.
#pragma once

#include "kestrinectl/compare/CellSums.h"
#include "kestrinectl/compare/LumaPlane.h"

#include <optional>

namespace kestrine {

/// The side of the window in which pictures are compared, in pixels.
inline constexpr std::uint32_t similarityWindow = 11;

/// How similar two pictures are.
struct Similarity {
    double mean;   ///< 1 for equal pictures, less for others
    CellSums loss; ///< where they differ: the sums of 1 - similarity, by the centre of the window
};

/// The structural similarity at all positions at which the window lies within the pictures. The window is a
/// Gaussian with a standard deviation of 1.5 pixels; the constants are those of the publication (K1 = 0.01,
/// K2 = 0.03, L = 255). nullopt if the sizes differ or a side is smaller than the window. Any thread.
std::optional<Similarity> structuralSimilarity(const LumaPlane& a, const LumaPlane& b);

} // namespace kestrine
