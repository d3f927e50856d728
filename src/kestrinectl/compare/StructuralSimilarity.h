// StructuralSimilarity: how similar two pictures look (SSIM).
// Z. Wang, A. C. Bovik, H. R. Sheikh, E. P. Simoncelli: Image quality assessment: from error visibility to
// structural similarity. IEEE Transactions on Image Processing 13 (2004), 600-612.
#pragma once

#include "kestrinectl/compare/LumaPlane.h"

#include <optional>

namespace kestrine {

/// The side of the window in which pictures are compared, in pixels.
inline constexpr std::uint32_t similarityWindow = 11;

/// The mean of the structural similarity over all positions at which the window lies within the pictures: 1
/// for equal pictures, less for others. The window is a Gaussian with a standard deviation of 1.5 pixels; the
/// constants are those of the publication (K1 = 0.01, K2 = 0.03, L = 255). nullopt if the sizes differ or a
/// side is smaller than the window. Any thread.
std::optional<double> structuralSimilarity(const LumaPlane& a, const LumaPlane& b);

} // namespace kestrine
