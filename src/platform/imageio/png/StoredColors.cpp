#include "platform/imageio/png/StoredColors.h"

#include "platform/host/BigEndian.h"

#include <cmath>

namespace kestrine::png {

namespace {

std::optional<ColorProfile> embeddedProfile(const LibraryReader& file, ColorModel model) {
    png_charp name = nullptr;
    png_bytep icc = nullptr;
    png_uint_32 length = 0;
    int method = 0;
    if (!libpng().getICCP(file.png(), file.info(), &name, &method, &icc, &length))
        return std::nullopt;
    return ColorProfile::fromICC(ByteView(icc, length), model);
}

/// The primaries in cHRM, or those of sRGB if there is no cHRM or it equals them within rounding.
Chromaticities storedPrimaries(const LibraryReader& file) {
    png_fixed_point v[8];
    if (!libpng().getCHRMFixed(file.png(), file.info(), &v[0], &v[1], &v[2], &v[3], &v[4], &v[5], &v[6],
                               &v[7]))
        return sRGBChromaticities;
    const auto point = [&](int i) {
        return Chromaticities::Point{v[2 * i] / double{PNG_FP_1}, v[2 * i + 1] / double{PNG_FP_1}};
    };
    const auto near = [](Chromaticities::Point a, Chromaticities::Point b) {
        constexpr double rounding = 0.001;
        return std::abs(a.x - b.x) <= rounding && std::abs(a.y - b.y) <= rounding;
    };
    const Chromaticities stored{.white = point(0), .red = point(1), .green = point(2), .blue = point(3)};
    const Chromaticities& standard = sRGBChromaticities;
    return near(stored.white, standard.white) && near(stored.red, standard.red)
                   && near(stored.green, standard.green) && near(stored.blue, standard.blue)
               ? standard
               : stored;
}

/// The profile that gAMA and cHRM describe; none when they describe sRGB. Primaries without a gamma are
/// ignored because the tone curve is unknown; for grey pictures only the gamma counts.
std::optional<ColorProfile> calibratedProfile(const LibraryReader& file, ColorModel model) {
    constexpr double standardGamma = 0.45455, tolerance = 0.01;
    png_fixed_point fixed = 0;
    if (!libpng().getGAMAFixed(file.png(), file.info(), &fixed) || fixed <= 0)
        return std::nullopt;
    const double gamma = fixed / double{PNG_FP_1};
    const Chromaticities primaries = model == ColorModel::gray ? sRGBChromaticities : storedPrimaries(file);
    if (std::abs(gamma / standardGamma - 1) <= tolerance && primaries == sRGBChromaticities)
        return std::nullopt;
    return ColorProfile::fromGamma(1 / gamma, primaries, model);
}

/// The code points in a cICP chunk; nullopt if there is none, or if they are unspecified or not permitted in
/// PNG.
std::optional<CodingPoints> storedPoints(const ByteReader& bytes, const std::optional<Chunk>& chunk) {
    constexpr std::uint16_t unspecified = 2, ofRGB = 0;
    const Bytes content = contentOfSize(4, bytes, chunk);
    if (content.empty())
        return std::nullopt;
    const CodingPoints points{content[0], content[1], content[2], content[3] == 1};
    const bool saysSomething = points.primaries != unspecified || points.transfer != unspecified;
    return saysSomething && points.matrix == ofRGB && points.isFullRange ? std::optional(points)
                                                                         : std::nullopt;
}

/// The brightest pixel that a cLLI chunk states, in cd/m2; 0 if there is none.
double storedBrightness(const ByteReader& bytes, const std::optional<Chunk>& chunk) {
    constexpr double perUnit = 10000;
    const Bytes content = contentOfSize(8, bytes, chunk);
    return content.empty() ? 0 : static_cast<double>(bigEndian(ByteView(content).first(4))) / perUnit;
}

/// `points` take precedence over everything else.
std::optional<ColorProfile> storedProfile(const LibraryReader& file, ColorModel model, const ExifFacts& exif,
                                          const std::optional<CodingPoints>& points) {
    if (points)
        return profileOf(*points, model);
    if (std::optional<ColorProfile> profile = embeddedProfile(file, model))
        return profile;
    if (libpng().getValid(file.png(), file.info(), PNG_INFO_sRGB))
        return std::nullopt;
    if (libpng().getValid(file.png(), file.info(), PNG_INFO_gAMA))
        return calibratedProfile(file, model);
    if (exif.isAdobeRGB && model == ColorModel::rgb)
        return ColorProfile::adobeRGB();
    return std::nullopt;
}

Bytes storedColorTable(const LibraryReader& file) {
    png_colorp colors = nullptr;
    int count = 0;
    Bytes table;
    if (!file.isIndexed() || !libpng().getPLTE(file.png(), file.info(), &colors, &count))
        return table;
    for (int i = 0; i < count; ++i)
        table.insert(table.end(), {colors[i].red, colors[i].green, colors[i].blue});
    return table;
}

} // namespace

StoredColors storedColors(const LibraryReader& file, const ByteReader& bytes, const ColorChunks& chunks,
                          const ExifFacts& exif) {
    const std::optional<CodingPoints> points = storedPoints(bytes, chunks.codingPoints);
    return {.profile = storedProfile(file, file.format().model, exif, points),
            .hdr = points ? hdrEncodingOf(*points, storedBrightness(bytes, chunks.lightLevel)) : std::nullopt,
            .table = storedColorTable(file)};
}

} // namespace kestrine::png
