#include "platform/coregraphics/ToneCurve.h"

#include "platform/coregraphics/ColorManagement.h"
#include "platform/coregraphics/CurveTag.h"

#include <algorithm>
#include <cmath>

namespace kestrine {

namespace {

/// Clamps to 0..1; 0 for NaN.
double unit(double value) { return value > 0 ? std::min(value, 1.0) : 0; }

double power(const ToneCurve::Formula& f, double stored) {
    return std::pow(std::max(f.scale * stored + f.offset, 0.0), f.exponent) + f.lift;
}

double lightOf(const ToneCurve::Formula& f, double stored) {
    if (stored >= f.start)
        return power(f, stored);
    // With rounded coefficients the line can end slightly above the start of the power.
    return std::min(f.slope * stored + f.toe, power(f, f.start));
}

double storedOf(const ToneCurve::Formula& f, double light) {
    if (f.start > 0 && light < power(f, f.start))
        return f.slope > 0 ? std::min((light - f.toe) / f.slope, f.start) : 0;
    return (std::pow(std::max(light - f.lift, 0.0), 1 / f.exponent) - f.offset) / f.scale;
}

/// Up to this light (as a fraction of white) and this lightness (CIE 1976 L* / 100) the two are proportional.
constexpr double linearLight = 216.0 / 24389;
constexpr double linearLightness = 0.08;

double lightOfLightness(double lightness) {
    if (lightness <= linearLightness)
        return lightness * (linearLight / linearLightness);
    return std::pow((lightness + 0.16) / 1.16, 3);
}

double lightnessOfLight(double light) {
    if (light <= linearLight)
        return light * (linearLightness / linearLight);
    return 1.16 * std::cbrt(light) - 0.16;
}

/// Whether half an 8-bit level is more than half a step of the table index everywhere, so that rounding to an
/// index cannot change the code.
bool keepsCodesApart(const ToneCurve& curve) {
    constexpr int halfLevels = 510;
    constexpr double smallestStep = 0.5001 / (toneTableSize - 1);
    double before = std::sqrt(curve.light(0));
    for (int i = 1; i <= halfLevels; ++i) {
        const double here = std::sqrt(curve.light(i / double{halfLevels}));
        if (here - before < smallestStep)
            return false;
        before = here;
    }
    return true;
}

std::optional<ToneCurve> readCurve(const ProfileHandle& profile, cmsTagSignature tag) {
    const std::optional<CurveTag> curve = parseCurveTag(rawTag(profile, tag));
    if (!curve)
        return std::nullopt;
    if (const auto* formula = std::get_if<ToneCurve::Formula>(&*curve))
        return ToneCurve::fromFormula(*formula);
    return ToneCurve::fromSamples(std::get<std::vector<std::uint16_t>>(*curve));
}

std::optional<std::vector<ToneCurve>> readCurves(const ProfileHandle& profile, ColorModel model) {
    constexpr cmsTagSignature gray[] = {cmsSigGrayTRCTag};
    constexpr cmsTagSignature rgb[] = {cmsSigRedTRCTag, cmsSigGreenTRCTag, cmsSigBlueTRCTag};
    const bool isGray = model == ColorModel::gray;
    // The curve of a grey profile gives neutral grey in its connection space: light (XYZ) or lightness (Lab).
    const bool isLightness = isGray && colorLibrary().connectionSpace(profile.get()) == cmsSigLabData;
    std::vector<ToneCurve> curves;
    for (const cmsTagSignature tag : isGray ? std::span<const cmsTagSignature>(gray) : rgb) {
        const std::optional<ToneCurve> curve = readCurve(profile, tag);
        if (!curve)
            return std::nullopt;
        curves.push_back(isLightness ? curve->asLightness() : *curve);
    }
    return curves;
}

} // namespace

ToneCurve ToneCurve::sRGB() {
    return ToneCurve(Formula{
        .exponent = 2.4, .scale = 1 / 1.055, .offset = 0.055 / 1.055, .start = 0.04045, .slope = 1 / 12.92});
}

std::optional<ToneCurve> ToneCurve::fromFormula(const Formula& f) {
    constexpr double roundingOfCoefficients = 1e-4; // profiles store them in whole 65536ths
    const double numbers[] = {f.exponent, f.scale, f.offset, f.lift, f.start, f.slope, f.toe};
    if (!std::ranges::all_of(numbers, [](double number) { return std::isfinite(number); }))
        return std::nullopt;
    const bool rises = f.exponent > 0 && f.scale > 0 && f.slope >= 0;
    if (!rises || f.slope * f.start + f.toe > power(f, f.start) + roundingOfCoefficients)
        return std::nullopt;
    return ToneCurve(f);
}

std::optional<ToneCurve> ToneCurve::fromSamples(std::span<const std::uint16_t> samples) {
    if (samples.size() < 2 || !std::ranges::is_sorted(samples) || samples.front() == samples.back())
        return std::nullopt;
    const double last = static_cast<double>(samples.size() - 1);
    Polyline points;
    for (std::size_t begin = 0; begin < samples.size();) {
        const auto runEnd = std::ranges::upper_bound(samples, samples[begin]);
        const std::size_t end = static_cast<std::size_t>(runEnd - samples.begin());
        // A run of equal samples is placed at its middle, but at the ends of the curve at that end.
        const double middle = static_cast<double>(begin + end - 1) / 2;
        const double place = begin == 0 ? 0 : end == samples.size() ? last : middle;
        points.push_back({place / last, samples[begin] / 65535.0});
        begin = end;
    }
    return ToneCurve(std::move(points));
}

ToneCurve ToneCurve::asLightness() const {
    ToneCurve curve = *this;
    curve.isLightness_ = true;
    return curve;
}

double ToneCurve::light(double stored) const {
    const double from = unit(stored);
    double value = 0;
    if (const auto* formula = std::get_if<Formula>(&shape_)) {
        value = unit(lightOf(*formula, from));
    } else {
        const auto& points = std::get<Polyline>(shape_);
        const auto after = std::upper_bound(points.begin() + 1, points.end() - 1, from,
                                            [](double x, const Point& point) { return x < point.stored; });
        const Point& a = *(after - 1);
        const Point& b = *after;
        value = a.light + (from - a.stored) / (b.stored - a.stored) * (b.light - a.light);
    }
    return isLightness_ ? lightOfLightness(value) : value;
}

double ToneCurve::stored(double light) const {
    const double from = isLightness_ ? lightnessOfLight(unit(light)) : unit(light);
    if (const auto* formula = std::get_if<Formula>(&shape_))
        return unit(storedOf(*formula, from));
    const auto& points = std::get<Polyline>(shape_);
    const auto after = std::upper_bound(points.begin() + 1, points.end() - 1, from,
                                        [](double y, const Point& point) { return y < point.light; });
    const Point& a = *(after - 1);
    const Point& b = *after;
    return unit(a.stored + (from - a.light) / (b.light - a.light) * (b.stored - a.stored));
}

std::optional<std::vector<ToneCurve>> plainToneCurves(const ColorProfile& profile) {
    const ContextHandle context = makeContext();
    const bool isGray = profile.model() == ColorModel::gray;
    const ProfileHandle handle =
        openPictureProfile(context, profile.bytes(), isGray ? cmsSigGrayData : cmsSigRgbData);
    if (!handle)
        return std::nullopt;
    std::optional<std::vector<ToneCurve>> curves = readCurves(handle, profile.model());
    if (!curves)
        return std::nullopt;
    const auto isPlain = [&](const ToneCurve& curve) {
        const bool isRepetition = &curve != &curves->front() && curve == curves->front();
        return isRepetition || keepsCodesApart(curve);
    };
    return std::ranges::all_of(*curves, isPlain) ? curves : std::nullopt;
}

std::vector<ToneCurve> toneCurves(const ColorProfile* profile, ColorModel model) {
    if (profile && profile->model() == model)
        if (std::optional<std::vector<ToneCurve>> curves = plainToneCurves(*profile))
            return *std::move(curves);
    return std::vector<ToneCurve>(static_cast<std::size_t>(model), ToneCurve::sRGB());
}

} // namespace kestrine
