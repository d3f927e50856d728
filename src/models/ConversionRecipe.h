// ConversionRecipe: what is made of a picture and where it goes, as plain data. Presets and the options of
// kestrinectl both give recipes; nothing else describes a conversion.
#pragma once

#include "models/PixelSize.h"
#include "models/ResultPlace.h"
#include "platform/imageio/OutputFormats.h"

#include <variant>
#include <vector>

namespace kestrine {

/// The picture keeps its size.
struct Unscaled {
    bool operator==(const Unscaled&) const = default;
};
/// To width x height points; a side of 0 follows from the other one.
struct PointSize {
    float width = 0;
    float height = 0;

    bool operator==(const PointSize&) const = default;
};
/// Both sides are multiplied by `ratio`.
struct PointRatio {
    float ratio = 1;

    bool operator==(const PointRatio&) const = default;
};
/// The longer side to `length` points.
struct PointLongest {
    float length = 0;

    bool operator==(const PointLongest&) const = default;
};
/// Presets count in points, with the rules of ImageUtility; PixelSize gives exact pixels.
using SizeRule = std::variant<Unscaled, PointSize, PointRatio, PointLongest, PixelSize>;

/// Which format a result has.
struct FormatRule {
    enum class Choice : std::uint8_t {
        none,     ///< nothing is written
        fixed,    ///< `type`
        ofSource, ///< that of the file; if it is not written, PNG with transparency and JPEG without
    };
    Choice choice = Choice::none;
    FileType type = FileType::jpeg; ///< for `fixed`

    bool operator==(const FormatRule&) const = default;
};

struct ConversionRecipe {
    SizeRule size;
    bool enlarges = true;    ///< else a picture that would get larger keeps its size
    bool usesLanczos = true; ///< for sizes in points; else the plain filter. PixelSize is always Lanczos
    bool convertsResolution = true; ///< one point per pixel before scaling
    bool turnsByNarrowRule = false; ///< orientations 6 and 8, as ExifTagReader finds them
    FormatRule format;
    float quality = 0; ///< 0 to 1, for formats with a quality
    bool keepsExif = false;
    ResultPlace place;

    bool operator==(const ConversionRecipe&) const = default;
};

using ConversionRecipes = std::vector<ConversionRecipe>;

} // namespace kestrine
