// ColorReference: colours computed in double precision from published formulas and matrices, as expected
// values.
#pragma once

#include "tests/platform/coregraphics/ProfileBuilder.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace kestrine::testing {

using Triple = std::array<double, 3>;

/// The stored sRGB value, 0 to 1, of light (any number).
inline double storedInSRGB(double light) {
    const double inRange = std::clamp(light, 0.0, 1.0);
    return inRange <= 0.0031308 ? 12.92 * inRange : 1.055 * std::pow(inRange, 1 / 2.4) - 0.055;
}

inline Triple storedInSRGB(const Triple& m0, const Triple& m1, const Triple& m2, const Triple& color) {
    const auto sum = [&](const Triple& row) {
        return row[0] * color[0] + row[1] * color[1] + row[2] * color[2];
    };
    return {storedInSRGB(sum(m0)), storedInSRGB(sum(m1)), storedInSRGB(sum(m2))};
}

/// Light of a stored sRGB value, 0 to 1.
inline double lightInSRGB(double stored) {
    return stored <= 0.04045 ? stored / 12.92 : std::pow((stored + 0.055) / 1.055, 2.4);
}

/// Converts light of the Adobe RGB primaries to stored sRGB. Both have the white D65; the matrix was computed
/// from the chromaticities of the primaries.
inline Triple sRGBOfAdobeLight(const Triple& light) {
    return storedInSRGB({1.3983557, -0.3983557, 0}, {0, 1, 0}, {0, -0.0429290, 1.0429290}, light);
}

/// The stored generic RGB value, 0 to 1, of light (any number).
inline double storedInGenericRGB(double light) { return std::pow(std::clamp(light, 0.0, 1.0), 1 / 1.8); }

/// Converts light of the sRGB primaries to stored generic RGB. Both have the white D65; the matrix was
/// computed from the chromaticities of the primaries.
inline Triple genericRGBOfLight(const Triple& light) {
    constexpr std::array<Triple, 3> matrix = {{{0.9748495, 0.0272954, -0.0021449},
                                               {-0.0200003, 1.0542090, -0.0342088},
                                               {0.0016907, 0.0015638, 0.9967455}}};
    Triple result{};
    for (std::size_t c = 0; c < 3; ++c)
        result[c] =
            storedInGenericRGB(matrix[c][0] * light[0] + matrix[c][1] * light[1] + matrix[c][2] * light[2]);
    return result;
}

/// Converts CIE L*a*b* under D50 to stored sRGB, with chromatic adaptation by Bradford's matrix.
inline Triple sRGBOfLab(const Lab& lab) {
    const auto cubed = [](double f) { return f > 6.0 / 29 ? f * f * f : (f - 4.0 / 29) * 108 / 841; };
    const double fy = (lab.lightness + 16) / 116;
    const Triple xyz = {0.9642 * cubed(fy + lab.a / 500), cubed(fy), 0.8249 * cubed(fy - lab.b / 200)};
    return storedInSRGB({3.1338561, -1.6168667, -0.4906146}, {-0.9787684, 1.9161415, 0.0334540},
                        {0.0719453, -0.2289914, 1.4052427}, xyz);
}

} // namespace kestrine::testing
