// ToneCurve: the relation between stored samples and light, as a function and as tables for rows of pixels.
// Curves are monotone and keep all 256 codes apart, so that every code survives the conversion to light and
// back.
#pragma once

#include "platform/coregraphics/ColorProfile.h"

#include <array>
#include <mutex>
#include <optional>
#include <span>
#include <variant>
#include <vector>

namespace kestrine {

/// A monotone function from stored samples of one channel (0..1) to light (0..1), and its inverse. Arguments
/// are clamped to 0..1; NaN counts as 0.
class ToneCurve {
public:
    /// light = (scale * stored + offset) ^ exponent + lift for stored >= start,
    /// otherwise slope * stored + toe.
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
    /// nullopt if the formula decreases anywhere or has numbers that are not finite.
    static std::optional<ToneCurve> fromFormula(const Formula& formula);
    /// `samples` are light (65535 is full light) at equally spaced stored values from 0 to 1, joined by
    /// straight lines. A run of equal samples, which rounding causes near black, becomes a slope to its
    /// neighbours. nullopt if there are fewer than two samples, or if they decrease anywhere or are all
    /// equal.
    static std::optional<ToneCurve> fromSamples(std::span<const std::uint16_t> samples);
    /// The curve from stored values to light if this curve gives lightness (CIE L*, as 0..1) instead of
    /// light.
    ToneCurve asLightness() const;

    double light(double stored) const;
    double stored(double light) const;

    bool operator==(const ToneCurve&) const = default;

private:
    struct Point {
        double stored, light;

        bool operator==(const Point&) const = default;
    };
    using Polyline = std::vector<Point>; ///< from stored 0 to 1; both numbers increase

    explicit ToneCurve(std::variant<Formula, Polyline> shape) : shape_(std::move(shape)) {}

    std::variant<Formula, Polyline> shape_;
    bool isLightness_ = false;
};

/// The curves of the channels of a picture: one for grey, three for RGB. A null profile means sRGB. All
/// curves are that of sRGB if the profile has no plain curves or is not for `model`.
std::vector<ToneCurve> toneCurves(const ColorProfile* profile, ColorModel model);

/// The curves of the profile. nullopt if it has none, or if one of them is not monotone or so flat that the
/// tables below could not keep its 256 codes apart.
std::optional<std::vector<ToneCurve>> plainToneCurves(const ColorProfile& profile);

/// Number of entries of the tables from light to stored values. The index is the square root of light, which
/// gives a fine resolution near black, where power curves are steep. With 4096 entries
///  - every 8-bit code is converted to light and back without a change;
///  - 8-bit codes are chosen within 0.1 level of exact rounding for exponents up to 2.2, sRGB and L*, within
///    0.15 for 2.4, and within 0.5 for every plain curve;
///  - 16-bit codes change by at most 1, and only codes below 30 change (exponent 2.2).
inline constexpr std::size_t toneTableSize = 4096;

/// Tables of one curve. Any thread.
class ToneTable {
public:
    explicit ToneTable(ToneCurve curve);

    /// Light of each 8-bit code.
    alignas(64) const std::array<float, 256> light8;
    /// The 8-bit codes; the index is sqrt(light) * (toneTableSize - 1), rounded. Three more codes allow loads
    /// of four bytes at any index.
    alignas(64) const std::array<std::uint8_t, toneTableSize + 3> stored8;

    /// Light of each 16-bit code: 65536 values, computed on first use.
    std::span<const float> light16() const;
    /// The stored value (0..1) at sqrt(light) = index / (toneTableSize - 1), for linear interpolation:
    /// toneTableSize values, computed on first use.
    std::span<const float> storedFraction() const;

private:
    const ToneCurve curve_;
    mutable std::once_flag light16Once_;
    mutable std::once_flag storedFractionOnce_;
    mutable std::vector<float> light16_;
    mutable std::vector<float> storedFraction_;
};

/// The tables of the channels of a picture. Channels with equal curves share a table.
struct ToneTables {
    std::vector<std::shared_ptr<const ToneTable>> channels;

    const ToneTable& operator[](std::size_t channel) const { return *channels[channel]; }
};

/// Tables of toneCurves(profile, model). Those of the last few profiles are cached. Any thread.
std::shared_ptr<const ToneTables> toneTables(const ColorProfile* profile, ColorModel model);

} // namespace kestrine
