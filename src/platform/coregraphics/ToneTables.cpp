// The tables of tone curves, and a small cache of those of the last profiles.

#include "platform/coregraphics/ToneCurve.h"

#include <algorithm>
#include <cmath>

namespace kestrine {

namespace {

std::array<float, 256> makeLight8(const ToneCurve& curve) {
    std::array<float, 256> light;
    for (std::size_t code = 0; code < light.size(); ++code)
        light[code] = static_cast<float>(curve.light(static_cast<double>(code) / 255));
    return light;
}

/// Code k begins at the light of the stored value (k - 1/2) / 255. So 255 values of the curve define all
/// entries exactly, without its inverse.
std::array<std::uint8_t, toneTableSize + 3> makeStored8(const ToneCurve& curve) {
    std::array<std::uint8_t, toneTableSize + 3> codes;
    auto* next = codes.begin();
    for (unsigned code = 0; code < 255; ++code) {
        const double boundary = std::sqrt(curve.light((code + 0.5) / 255)) * (toneTableSize - 1);
        auto* const end = std::max(next, codes.begin() + static_cast<std::size_t>(std::ceil(boundary)));
        next = std::fill_n(next, end - next, static_cast<std::uint8_t>(code));
    }
    std::fill(next, codes.end(), std::uint8_t{255});
    return codes;
}

struct CachedTables {
    Bytes profile; ///< empty for sRGB
    ColorModel model;
    std::shared_ptr<const ToneTables> tables;
};

std::shared_ptr<const ToneTables> makeTables(const ColorProfile* profile, ColorModel model) {
    const std::vector<ToneCurve> curves = toneCurves(profile, model);
    auto tables = std::make_shared<ToneTables>();
    for (std::size_t channel = 0; channel < curves.size(); ++channel) {
        const auto same =
            static_cast<std::size_t>(std::ranges::find(curves, curves[channel]) - curves.begin());
        tables->channels.push_back(same < channel ? tables->channels[same]
                                                  : std::make_shared<const ToneTable>(curves[channel]));
    }
    return tables;
}

} // namespace

ToneTable::ToneTable(ToneCurve curve)
    : light8(makeLight8(curve)), stored8(makeStored8(curve)), curve_(std::move(curve)) {}

std::span<const float> ToneTable::light16() const {
    std::call_once(light16Once_, [this] {
        light16_.resize(65536);
        for (std::size_t code = 0; code < light16_.size(); ++code)
            light16_[code] = static_cast<float>(curve_.light(static_cast<double>(code) / 65535));
    });
    return light16_;
}

std::span<const float> ToneTable::storedFraction() const {
    std::call_once(storedFractionOnce_, [this] {
        storedFraction_.resize(toneTableSize);
        for (std::size_t i = 0; i < storedFraction_.size(); ++i) {
            const double root = static_cast<double>(i) / (toneTableSize - 1);
            storedFraction_[i] = static_cast<float>(curve_.stored(root * root));
        }
    });
    return storedFraction_;
}

std::shared_ptr<const ToneTables> toneTables(const ColorProfile* profile, ColorModel model) {
    constexpr std::size_t kept = 4; // the pictures of one run rarely have more profiles
    static std::mutex mutex;
    static std::vector<CachedTables> cache; // most recently used first
    const ByteView key = profile ? profile->bytes() : ByteView();
    const std::scoped_lock lock(mutex);
    const auto found = std::ranges::find_if(cache, [&](const CachedTables& entry) {
        return entry.model == model && std::ranges::equal(entry.profile, key);
    });
    if (found != cache.end()) {
        std::rotate(cache.begin(), found, found + 1);
        return cache.front().tables;
    }
    auto tables = makeTables(profile, model);
    cache.insert(cache.begin(), {Bytes(key.begin(), key.end()), model, tables});
    if (cache.size() > kept)
        cache.pop_back();
    return tables;
}

} // namespace kestrine
