// ConversionRecipe: what is made of a picture and where it goes, as plain data. Presets and the options of
// kestrinectl both give recipes; nothing else describes a conversion.
#pragma once

#include "models/PixelSize.h"
#include "models/ResultPlace.h"
#include "platform/coregraphics/RGBColor.h"
#include "platform/imageio/OutputFormats.h"
#include "platform/imageio/exif/CarriedExif.h"

#include <variant>
#include <vector>

namespace kestrine {

/// The picture keeps its size.
struct Unscaled {
    bool operator==(const Unscaled&) const = default;
};
/// The picture gets width x height points; a side of 0 follows from the other one.
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
/// The longer side gets `length` points.
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

/// Which pictures are turned upright.
enum class UprightRule : std::uint8_t {
    never,
    narrow, ///< presets: a quarter turn where ExifTagReader finds orientation 6 or 8
    always, ///< all orientations, wherever the format stores them
};

/// The modification time of a result.
enum class TimesRule : std::uint8_t {
    now,
    keep,  ///< that of the original
    taken, ///< when the picture was taken, in local time; now if the file does not say it
};

struct ConversionRecipe {
    SizeRule size;
    bool enlarges = true;    ///< else a picture that would get larger keeps its size
    bool usesLanczos = true; ///< for sizes in points; else the plain filter. PixelSize is always Lanczos
    bool convertsResolution = true; ///< one point per pixel before scaling
    UprightRule upright = UprightRule::never;
    std::optional<RGBColor> background; ///< for transparent parts; they stay transparent where the format can
    bool intoSRGB = false;              ///< else the picture keeps its profile
    FormatRule format;
    float quality = 0;                 ///< 0 to 1, for formats with a quality
    bool isLossless = false;           ///< exact, for formats that can be lossy or not
    bool isProgressive = false;        ///< for formats that can be
    Effort effort = Effort::normal;    ///< of encoders that have a choice
    std::optional<ExifSelection> exif; ///< how much is kept, where the format can hold it; none by default
    std::uint64_t maxBytes = 0;        ///< the quality goes down until the file is as small; 0 for any size
    TimesRule times = TimesRule::now;
    bool copiesFitting = false; ///< a file that is as the result should be becomes the result unchanged
    ResultPlace place;

    bool operator==(const ConversionRecipe&) const = default;
};

using ConversionRecipes = std::vector<ConversionRecipe>;

/// Whether the result replaces its original. Only a single recipe can do that.
bool replacesFiles(const ConversionRecipes& recipes);

/// Whether the name of a result contains the number of the file.
bool numbersNames(const ConversionRecipes& recipes);

/// What is made of a picture without a preset, unless options change it: it keeps its size and format (where
/// that is written), stands upright, and loses location, serial numbers and the owner's name. Quality is 0.8.
ConversionRecipe usualRecipe();

} // namespace kestrine
