#include "platform/coregraphics/CodingPoints.h"

#include <algorithm>

namespace kestrine {

namespace {

constexpr Chromaticities::Point d65{0.3127, 0.3290};
constexpr Chromaticities::Point illuminantC{0.310, 0.316};

struct NumberedPrimaries {
    std::uint16_t number;
    Chromaticities colors;
    const char* name; ///< of the profile
};

/// The primaries of ITU-T H.273, table 2. Those of BT.709 and sRGB (1) are left out, and CIE XYZ (10).
const NumberedPrimaries primariesTable[] = {
    {4, {illuminantC, {0.67, 0.33}, {0.21, 0.71}, {0.14, 0.08}}, "BT.470 M"},
    {5, {d65, {0.64, 0.33}, {0.29, 0.60}, {0.15, 0.06}}, "BT.470 BG"},
    {6, {d65, {0.630, 0.340}, {0.310, 0.595}, {0.155, 0.070}}, "SMPTE 170M"},
    {7, {d65, {0.630, 0.340}, {0.310, 0.595}, {0.155, 0.070}}, "SMPTE 240M"},
    {8, {illuminantC, {0.681, 0.319}, {0.243, 0.692}, {0.145, 0.049}}, "Generic film"},
    {9, {d65, {0.708, 0.292}, {0.170, 0.797}, {0.131, 0.046}}, "BT.2020"},
    {11, {{0.314, 0.351}, {0.680, 0.320}, {0.265, 0.690}, {0.150, 0.060}}, "DCI-P3"},
    {12, {d65, {0.680, 0.320}, {0.265, 0.690}, {0.150, 0.060}}, "Display P3"},
    {22, {d65, {0.630, 0.340}, {0.295, 0.605}, {0.155, 0.077}}, "EBU 3213"},
};

const NumberedPrimaries* primariesNumbered(std::uint16_t number) {
    const auto found = std::ranges::find(primariesTable, number, &NumberedPrimaries::number);
    return found == std::end(primariesTable) ? nullptr : found;
}

/// The exponent of transfer functions that are powers; nullopt for all others.
std::optional<double> exponentOf(std::uint16_t transfer) {
    switch (transfer) {
    case 4:
        return 2.2;
    case 5:
        return 2.8;
    case 8:
        return 1.0;
    case 17:
        return 2.6;
    default:
        return std::nullopt;
    }
}

/// The share of red and blue in Y.
struct Weights {
    double red, blue;
};

/// The weights that follow from the primaries: Y is the luminance.
Weights weightsOf(const Chromaticities& c) {
    // Solves sum(w_i * xyz_i) = white for the weights, by Cramer's rule.
    const auto vector = [](Chromaticities::Point p) {
        return std::array{p.x / p.y, 1.0, (1 - p.x - p.y) / p.y};
    };
    const auto determinant = [](const auto& a, const auto& b, const auto& d) {
        return a[0] * (b[1] * d[2] - b[2] * d[1]) - b[0] * (a[1] * d[2] - a[2] * d[1])
               + d[0] * (a[1] * b[2] - a[2] * b[1]);
    };
    const auto red = vector(c.red), green = vector(c.green), blue = vector(c.blue), white = vector(c.white);
    const double all = determinant(red, green, blue);
    return {determinant(white, green, blue) / all, determinant(red, green, white) / all};
}

std::optional<Weights> weightsOf(const CodingPoints& points) {
    switch (points.matrix) {
    case 1:
        return Weights{0.2126, 0.0722};
    case 2:
    case 3:
    case 5:
    case 6:
        return Weights{0.299, 0.114};
    case 4:
        return Weights{0.30, 0.11};
    case 7:
        return Weights{0.212, 0.087};
    case 9:
        return Weights{0.2627, 0.0593};
    case 12:
        if (const NumberedPrimaries* primaries = primariesNumbered(points.primaries))
            return weightsOf(primaries->colors);
        return weightsOf(sRGBChromaticities);
    default:
        return std::nullopt;
    }
}

} // namespace

std::optional<ColorMatrix> matrixOf(const CodingPoints& points) {
    constexpr std::uint16_t identity = 0, yCgCo = 8;
    if (points.matrix == identity) // the planes are green, blue and red
        return ColorMatrix{{{0, 0, 1}, {1, 0, 0}, {0, 1, 0}}};
    if (points.matrix == yCgCo)
        return ColorMatrix{{{1, -1, 1}, {1, 1, 0}, {1, -1, -1}}};
    const std::optional<Weights> weights = weightsOf(points);
    if (!weights)
        return std::nullopt;
    const double r = weights->red, b = weights->blue, g = 1 - r - b;
    return ColorMatrix{
        {{1, 0, 2 * (1 - r)}, {1, -2 * b * (1 - b) / g, -2 * r * (1 - r) / g}, {1, 2 * (1 - b), 0}}};
}

std::optional<ColorProfile> profileOf(const CodingPoints& points, ColorModel model) {
    const NumberedPrimaries* primaries = primariesNumbered(points.primaries);
    const std::optional<double> exponent = exponentOf(points.transfer);
    if (exponent)
        return ColorProfile::fromGamma(*exponent, primaries ? primaries->colors : sRGBChromaticities, model);
    if (primaries == nullptr || model == ColorModel::gray)
        return std::nullopt;
    return ColorProfile::fromSRGBCurve(primaries->colors, primaries->name);
}

} // namespace kestrine
