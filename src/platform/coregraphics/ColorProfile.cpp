// The profiles that this system makes have the same bytes in every run, so that output files do not depend on
// the date.

#include "platform/coregraphics/ColorProfile.h"

#include "platform/coregraphics/ColorManagement.h"

#include <algorithm>
#include <cmath>
#include <new>

namespace kestrine {

namespace {

struct CurveDeleter {
    void operator()(cmsToneCurve* curve) const { colorLibrary().freeCurve(curve); }
};
using CurveHandle = std::unique_ptr<cmsToneCurve, CurveDeleter>;

struct DescriptionDeleter {
    void operator()(cmsMLU* text) const { colorLibrary().freeText(text); }
};
using DescriptionHandle = std::unique_ptr<cmsMLU, DescriptionDeleter>;

/// Versions of the profile format: one that every reader supports, and one that stores exact formulas of
/// curves.
constexpr double oldVersion = 2.1;
constexpr double newVersion = 4.3;

/// The range of plausible exponents; outside, the curve is nearly a step.
constexpr double minimumGamma = 0.1;
constexpr double maximumGamma = 10;

constexpr Chromaticities adobeRGBChromaticities = {
    {0.3127, 0.3290}, {0.64, 0.33}, {0.21, 0.71}, {0.15, 0.06}};

constexpr Chromaticities genericRGBChromaticities = {
    {0.3127, 0.3290}, {0.63, 0.34}, {0.295, 0.605}, {0.155, 0.077}};

/// Twice the signed area of the triangle a, b, c.
double turn(Chromaticities::Point a, Chromaticities::Point b, Chromaticities::Point c) {
    return (b.x - a.x) * (c.y - a.y) - (b.y - a.y) * (c.x - a.x);
}

/// Whether the white could be that of a light source (from candle to blue sky, with some margin), the
/// primaries are no farther out than usual imaginary ones, and the white lies inside their triangle, so that
/// it is a sum of positive amounts of them. NaN is not plausible.
bool isPlausible(const Chromaticities& c) {
    const auto isNear = [](Chromaticities::Point p) { return std::abs(p.x) <= 2 && std::abs(p.y) <= 2; };
    const bool isLight = c.white.x >= 0.2 && c.white.x <= 0.6 && c.white.y >= 0.2 && c.white.y <= 0.5;
    const double first = turn(c.red, c.green, c.white);
    const double second = turn(c.green, c.blue, c.white);
    const double third = turn(c.blue, c.red, c.white);
    return isLight && isNear(c.red) && isNear(c.green) && isNear(c.blue) && first * second > 0
           && second * third > 0;
}

cmsCIExyY withFullLight(Chromaticities::Point point) { return {point.x, point.y, 1}; }

ProfileHandle makeProfile(const ContextHandle& context, const CurveHandle& curve,
                          const Chromaticities& colors, ColorModel model) {
    if (model == ColorModel::gray)
        return ProfileHandle(
            colorLibrary().createGrayProfile(context.get(), colorLibrary().d50(), curve.get()));
    const cmsCIExyY white = withFullLight(colors.white);
    const cmsCIExyYTRIPLE primaries = {withFullLight(colors.red), withFullLight(colors.green),
                                       withFullLight(colors.blue)};
    cmsToneCurve* const curves[] = {curve.get(), curve.get(), curve.get()};
    return ProfileHandle(colorLibrary().createRGBProfile(context.get(), &white, &primaries, curves));
}

void describe(const ContextHandle& context, const ProfileHandle& profile, const char* description) {
    const DescriptionHandle text(colorLibrary().makeText(context.get(), 1));
    if (!text || !colorLibrary().setText(text.get(), "en", "US", description)
        || !colorLibrary().writeTag(profile.get(), cmsSigProfileDescriptionTag, text.get()))
        throw std::bad_alloc();
}

/// Sets the date and the platform in the header to constants.
void fixHeader(Bytes& profile) {
    constexpr std::size_t creationDate = 24;
    constexpr std::size_t platform = 40;
    constexpr std::uint8_t firstOfJuly2020[] = {2020 >> 8, 2020 & 0xFF, 0, 7, 0, 1, 0, 0, 0, 0, 0, 0};
    std::ranges::copy(firstOfJuly2020, profile.begin() + creationDate);
    std::fill_n(profile.begin() + platform, 4, std::uint8_t{0});
}

/// The bytes of the profile; null if its numbers cannot be stored.
std::shared_ptr<const Bytes> save(const ProfileHandle& profile) {
    cmsUInt32Number size = 0;
    if (!profile || !colorLibrary().saveProfile(profile.get(), nullptr, &size))
        return nullptr;
    Bytes bytes(size);
    if (!colorLibrary().saveProfile(profile.get(), bytes.data(), &size))
        return nullptr;
    fixHeader(bytes);
    return std::make_shared<const Bytes>(std::move(bytes));
}

/// The old version stores exponents only in whole 256ths.
double versionForGamma(double gamma) {
    return gamma * 256 == std::floor(gamma * 256) ? oldVersion : newVersion;
}

std::shared_ptr<const Bytes> gammaProfile(double gamma, const Chromaticities& primaries, ColorModel model,
                                          const char* description) {
    const ContextHandle context = makeContext();
    const CurveHandle curve(colorLibrary().buildGamma(context.get(), gamma));
    if (!curve)
        throw std::bad_alloc();
    const ProfileHandle profile = makeProfile(context, curve, primaries, model);
    if (!profile)
        return nullptr;
    colorLibrary().setProfileVersion(profile.get(), versionForGamma(gamma));
    describe(context, profile, description);
    return save(profile);
}

/// Null if the primaries cannot be stored.
std::shared_ptr<const Bytes> profileWithSRGBCurve(const Chromaticities& primaries, const char* description) {
    constexpr int linearThenPower = 4; // y = (a x + b) ^ g for x >= d, otherwise c x
    constexpr double parameters[] = {2.4, 1 / 1.055, 0.055 / 1.055, 1 / 12.92, 0.04045};
    const ContextHandle context = makeContext();
    const CurveHandle curve(colorLibrary().buildParametricCurve(context.get(), linearThenPower, parameters));
    if (!curve)
        throw std::bad_alloc();
    const ProfileHandle profile = makeProfile(context, curve, primaries, ColorModel::rgb);
    if (!profile)
        return nullptr;
    colorLibrary().setProfileVersion(profile.get(), newVersion);
    describe(context, profile, description);
    return save(profile);
}

/// The bytes of a profile that can be missing only for lack of memory.
std::shared_ptr<const Bytes> required(std::shared_ptr<const Bytes> bytes) {
    return bytes ? bytes : throw std::bad_alloc();
}

} // namespace

const Chromaticities sRGBChromaticities = {{0.3127, 0.3290}, {0.64, 0.33}, {0.30, 0.60}, {0.15, 0.06}};

bool Chromaticities::operator==(const Chromaticities& other) const {
    const auto same = [](Point a, Point b) { return a.x == b.x && a.y == b.y; };
    return same(white, other.white) && same(red, other.red) && same(green, other.green)
           && same(blue, other.blue);
}

std::optional<ColorProfile> ColorProfile::fromICC(ByteView icc, ColorModel model) {
    const ContextHandle context = makeContext();
    if (!openPictureProfile(context, icc, model == ColorModel::gray ? cmsSigGrayData : cmsSigRgbData))
        return std::nullopt;
    const ByteView profile = icc.first(profileSize(icc));
    return ColorProfile(std::make_shared<const Bytes>(profile.begin(), profile.end()), model);
}

std::optional<ColorProfile> ColorProfile::fromGamma(double gamma, const Chromaticities& primaries,
                                                    ColorModel model) {
    const bool plausible = gamma >= minimumGamma && gamma <= maximumGamma
                           && (model == ColorModel::gray || isPlausible(primaries));
    if (!plausible)
        return std::nullopt;
    auto bytes = gammaProfile(gamma, primaries, model, model == ColorModel::gray ? "Gray" : "RGB");
    if (!bytes)
        return std::nullopt;
    return ColorProfile(std::move(bytes), model);
}

std::optional<ColorProfile> ColorProfile::fromSRGBCurve(const Chromaticities& primaries,
                                                        const char* description) {
    if (!isPlausible(primaries))
        return std::nullopt;
    auto bytes = profileWithSRGBCurve(primaries, description);
    if (!bytes)
        return std::nullopt;
    return ColorProfile(std::move(bytes), ColorModel::rgb);
}

ColorProfile ColorProfile::sRGB() {
    static const ColorProfile profile(required(profileWithSRGBCurve(sRGBChromaticities, "sRGB")),
                                      ColorModel::rgb);
    return profile;
}

ColorProfile ColorProfile::adobeRGB() {
    constexpr double gamma = 563.0 / 256;
    static const ColorProfile profile(
        required(gammaProfile(gamma, adobeRGBChromaticities, ColorModel::rgb, "Adobe RGB (1998) compatible")),
        ColorModel::rgb);
    return profile;
}

ColorProfile ColorProfile::genericRGB() {
    constexpr double gamma = 1.8;
    static const ColorProfile profile(
        required(gammaProfile(gamma, genericRGBChromaticities, ColorModel::rgb, "Generic RGB")),
        ColorModel::rgb);
    return profile;
}

} // namespace kestrine
