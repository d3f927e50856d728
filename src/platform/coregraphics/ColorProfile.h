// ColorProfile: an ICC profile that fits the pixels it comes with, and its tone curves.
#pragma once

#include "platform/coregraphics/RowFormat.h"
#include "platform/host/Bytes.h"

#include <array>
#include <memory>
#include <optional>

namespace kestrine {

/// Chromaticities (CIE 1931 x, y) of the white point and the primaries.
struct Chromaticities {
    struct Point {
        double x, y;
    };
    Point white, red, green, blue;

    bool operator==(const Chromaticities& other) const;
};

/// The primaries of sRGB (IEC 61966-2-1).
extern const Chromaticities sRGBChromaticities;

/// A shared handle on the profile's bytes. Immutable; safe to use from several threads.
class ColorProfile {
public:
    /// The profile in `icc`, or nothing when it is broken, too large or not made for pixels of `model`.
    static std::optional<ColorProfile> fromICC(ByteView icc, ColorModel model);
    /// An RGB (or, for grey, a grey) profile with a pure power curve of exponent `gamma`.
    static std::optional<ColorProfile> fromGamma(double gamma, const Chromaticities& primaries,
                                                 ColorModel model);
    static ColorProfile sRGB();
    /// The space that cameras mark as "Adobe RGB" in EXIF: its published primaries, gamma 563/256.
    static ColorProfile adobeRGB();
    /// The platform's colours for no device in particular: the P22 phosphors of European monitors under
    /// daylight (D65), gamma 1.8.
    static ColorProfile genericRGB();

    ByteView bytes() const { return *bytes_; }
    ColorModel model() const { return model_; }
    bool operator==(const ColorProfile& other) const { return *bytes_ == *other.bytes_; }

private:
    ColorProfile(std::shared_ptr<const Bytes> bytes, ColorModel model)
        : bytes_(std::move(bytes)), model_(model) {}

    std::shared_ptr<const Bytes> bytes_;
    ColorModel model_;
};

} // namespace kestrine
