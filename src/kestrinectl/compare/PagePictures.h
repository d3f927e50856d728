// PagePictures: the pictures that a page embeds to show a result.
#pragma once

#include "kestrinectl/compare/Comparison.h"

#include <array>
#include <span>

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
    std::vector<PagePicture> parts; ///< the same number for all results of one picture
    bool isReduced = false;         ///< whether the whole picture is shown smaller than it is
    bool isConverted = false;       ///< whether lossless PNG stands for a format that browsers do not show

    /// The length of the pictures in the page.
    std::uint64_t bytesInPage() const;
};

/// The longest side that is shown as it is, in pixels; also that of the reduced view of larger pictures.
inline constexpr std::uint32_t usualLongestSide = 2048;

/// A place in a picture, as fractions of its sides.
struct CropPlace {
    const char* name;
    double x, y; ///< of the centre
};

/// The places that large pictures are shown at in full size: the centre, where the results lose most, and
/// elsewhere where the original has most detail. For crops with sides of `cropSide` pixels.
std::array<CropPlace, 3> cropPlaces(const Comparison& comparison, std::uint32_t cropSide);

/// The side of the crops of a picture that is shown reduced to `longestSide`, in pixels.
std::uint32_t cropSideFor(std::uint32_t longestSide);

/// Shows the file as it is if browsers can show it, else as lossless PNG. A file with a side longer than
/// `longestSide` becomes a view of that size and crops at full size, at `places`. Decoded and encoded where
/// the current PictureEngine does it.
Result<ShownImage> shownImage(const ComparedImage& image, std::uint32_t longestSide,
                              std::span<const CropPlace> places);

} // namespace kestrine
