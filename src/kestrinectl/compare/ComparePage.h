// ComparePage: the HTML of a page that shows comparisons.
#pragma once

#include "kestrinectl/compare/PagePictures.h"

namespace kestrine {

/// One picture and its results, without their files.
struct PageSection {
    std::string name; ///< of the file, without folders; not escaped; may not be UTF-8
    Comparison comparison;
    std::vector<ShownImage> shown; ///< of comparison.images, in their order
    std::uint32_t longestSide = 0; ///< of what is shown, in pixels
};

/// A page that needs nothing else: its style, its script and its pictures are inside, and its policy (CSP)
/// lets browsers load nothing else.
std::string comparePage(const std::vector<PageSection>& sections);

/// What a page needs besides its pictures, at most, in bytes: alone, and more for each image. Names of sets
/// that are longer than those of files can need more.
inline constexpr std::uint64_t maxMarkupOfPage = 40'000, maxMarkupPerImage = 24'000;

} // namespace kestrine
