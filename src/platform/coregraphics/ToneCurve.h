// ToneCurve: how stored samples relate to light, as a function and as tables for whole rows of pixels.
// The rule: a curve is monotone and keeps all 256 codes apart, so that light always finds its way back.
#pragma once

#include "platform/coregraphics/ColorProfile.h"

#include <array>
#include <mutex>
#include <optional>
#include <span>
#include <variant>
#include <vector>

namespace kestrine {

/// How the stored samples of one channel (0..1) relate to light (0..1): a monotone function and its inverse.
/// Arguments outside 0..1 count as the nearer end, NaN as 0.
class ToneCurve {
public:
    /// light = (scale * stored + offset) ^ exponent + lift from stored = start on, slope * stored + toe
    /// below.
    struct Formula {
        double exponent = 1;
        double scale = 1;
        double offset = 0;
        double lift = 0;
        double start = 0;
        double slope = 0;
        double toe = 0;

        bool operator==(const Formula&) const = default;
    };

    static ToneCurve sRGB();
    /// Nothing when the formula falls anywhere or is not made of finite numbers.
    static std::optional<ToneCurve> fromFormula(const Formula& formula);
    /// Light at equally spaced stored values from 0 to 1 (65535 is full light), straight lines between. A run
    /// of equal samples, as rounding leaves near black, becomes a slope to its neighbours. Nothing when there
    /// are fewer than two samples, or when they fall anywhere or are all equal.
    static std::optional<ToneCurve> fromSamples(std::span<const std::uint16_t> samples);
    /// The curve of a channel whose stored values lead to lightness (CIE L*, as 0..1) by this one.
    ToneCurve asLightness() const;

    double light(double stored) const;
    double stored(double light) const;

    bool operator==(const ToneCurve&) const = default;

private:
    struct Point {
        double stored, light;

        bool operator==(const Point&) const = default;
    };
    using Polyline = std::vector<Point>; ///< from 0 to 1, rising in both

    explicit ToneCurve(std::variant<Formula, Polyline> shape) : shape_(std::move(shape)) {}

    std::variant<Formula, Polyline> shape_;
    bool isLightness_ = false;
};

/// The curves of a picture's channels, one for grey and three for RGB; a null profile means sRGB. A profile
/// without plain curves, or one that does not fit `model`, gives the sRGB curve for every channel.
std::vector<ToneCurve> toneCurves(const ColorProfile* profile, ColorModel model);

/// The profile's own curves; nothing when it has none, or when one of them is not monotone or so flat that
/// the tables below could not tell its 256 codes apart.
std::optional<std::vector<ToneCurve>> plainToneCurves(const ColorProfile& profile);

/// Entries of the tables from light to stored values. They are indexed by the square root of light, which
/// keeps them fine near black, where power curves are steep: 4096 entries then bring back every 8-bit code,
/// and decide within 0.1 level of exact rounding for exponents up to 2.2, sRGB and L* (0.15 for 2.4, and 0.5
/// for every curve that is taken as plain); they bring back every 16-bit code, off by one at most and below
/// 30 only (exponent 2.2).
inline constexpr std::size_t toneTableSize = 4096;

/// Tables of one curve. Immutable to its users; safe to use from several threads.
class ToneTable {
public:
    explicit ToneTable(ToneCurve curve);

    /// Light of each 8-bit code.
    alignas(64) const std::array<float, 256> light8;
    /// The 8-bit code for sqrt(light) * (toneTableSize - 1), rounded to the nearest index. The three codes
    /// more than that let a vector load fetch four bytes at any index.
    alignas(64) const std::array<std::uint8_t, toneTableSize + 3> stored8;

    /// Light of each 16-bit code: 65536 values, made on first use.
    std::span<const float> light16() const;
    /// The stored value (0..1) at sqrt(light) = index / (toneTableSize - 1), to be interpolated linearly:
    /// toneTableSize values, made on first use.
    std::span<const float> storedFraction() const;

private:
    const ToneCurve curve_;
    mutable std::once_flag light16Once_;
    mutable std::once_flag storedFractionOnce_;
    mutable std::vector<float> light16_;
    mutable std::vector<float> storedFraction_;
};

/// The tables of a picture's channels; channels with equal curves share one.
struct ToneTables {
    std::vector<std::shared_ptr<const ToneTable>> channels;

    const ToneTable& operator[](std::size_t channel) const { return *channels[channel]; }
};

/// Tables for toneCurves(profile, model). The last few profiles' are kept, so asking again is cheap.
std::shared_ptr<const ToneTables> toneTables(const ColorProfile* profile, ColorModel model);

} // namespace kestrine
