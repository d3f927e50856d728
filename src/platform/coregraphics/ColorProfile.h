// ColorProfile: a valid ICC profile for grey or RGB pixels.
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

/// A shared handle to the bytes of a profile. Immutable; any thread.
class ColorProfile {
public:
    /// The profile in `icc`; nullopt if it is invalid, larger than 16 MiB or not made for pixels of `model`.
    static std::optional<ColorProfile> fromICC(ByteView icc, ColorModel model);
    /// A profile for `model` with a power curve of exponent `gamma`; nullopt if the numbers are not
    /// plausible.
    static std::optional<ColorProfile> fromGamma(double gamma, const Chromaticities& primaries,
                                                 ColorModel model);
    /// An RGB profile with the tone curve of sRGB and other primaries; nullopt if they are not plausible.
    /// `description` is the name that programs show for it.
    static std::optional<ColorProfile> fromSRGBCurve(const Chromaticities& primaries,
                                                     const char* description);
    static ColorProfile sRGB();
    /// The space that cameras name "Adobe RGB" in EXIF, with the published primaries and gamma 563/256.
    static ColorProfile adobeRGB();
    /// The platform's device-independent RGB: the P22 phosphors of European monitors, white D65, gamma 1.8.
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
