// PagePictures: the pictures that a page embeds to show a result.
#pragma once

#include "kestrinectl/compare/Comparison.h"

namespace kestrine {

/// One embedded picture.
struct PagePicture {
    std::string part;           ///< "Whole picture", or which crop it is
    std::string_view mediaType; ///< "image/png"
    Bytes file;                 ///< has no EXIF data
    std::uint32_t width, height;
};

/// How a result is shown.
struct ShownImage {
    std::vector<PagePicture> parts; ///< the whole picture, then the crops of the view
    bool isReduced = false;         ///< whether the whole picture is shown smaller than it is
    bool isConverted = false;       ///< whether lossless PNG stands for a format that browsers do not show

    /// The length of the pictures in the page.
    std::uint64_t bytesInPage() const;
};

/// A place in a picture, as fractions of its sides.
struct CropPlace {
    const char* name;
    double x, y; ///< of the centre
};

/// What a page shows of all results of one picture.
struct PageView {
    std::uint32_t longestSide = 0; ///< of a picture that is shown as it is, and of reduced ones, in pixels
    std::uint32_t cropSide = 0;    ///< in pixels
    std::vector<CropPlace> crops;  ///< none if no picture is reduced

    bool reduces(const ComparedImage& image) const;
};

/// The longest side that is shown as it is, if the page has room for it, in pixels.
inline constexpr std::uint32_t usualLongestSide = 2048;

/// If a picture must be reduced, there are three crops: the centre, where the results lose most, and
/// elsewhere where the original has most detail.
PageView viewOf(const Comparison& comparison, std::uint32_t longestSide);

/// Shows the whole file as it is if browsers can show it, else as lossless PNG; reduced if it is larger than
/// the view allows. Then the crops, whose pixels are exact. Decoded and encoded where the current
/// PictureEngine does it.
Result<ShownImage> shownImage(const ComparedImage& image, const PageView& view);

} // namespace kestrine
