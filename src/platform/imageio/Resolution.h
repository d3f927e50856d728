// Resolution: the number of pixels per inch of a picture.
#pragma once

namespace kestrine {

inline constexpr double centimetresPerInch = 2.54;
inline constexpr double metresPerInch = 0.0254;

/// The resolution along the two axes, in pixels per inch. Without a usable value in the file it is 72.
struct Resolution {
    double horizontal = 72;
    double vertical = 72;

    bool operator==(const Resolution&) const = default;
};

/// The resolution for the values in a file, in pixels per inch. A value outside 1 to 100000 becomes 72; the
/// other axis keeps its value.
Resolution plausibleResolution(double horizontal, double vertical);

} // namespace kestrine
