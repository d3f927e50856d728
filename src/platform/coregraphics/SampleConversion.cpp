#include "platform/coregraphics/SampleConversion.h"

#include "platform/coregraphics/kernels/StoredIndexes.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <numeric>

namespace kestrine {

namespace {

constexpr float topIndex = toneTableSize - 1;

std::vector<float> fractionsOfCodes(std::size_t codes) {
    std::vector<float> table(codes);
    for (std::size_t i = 0; i < codes; ++i)
        table[i] = static_cast<float>(static_cast<double>(i) / static_cast<double>(codes - 1));
    return table;
}

/// code / 255 or code / 65535 for every code.
const float* fractions(SampleDepth depth) {
    static const std::vector<float> table8 = fractionsOfCodes(256);
    if (depth == SampleDepth::bits8)
        return table8.data();
    static const std::vector<float> table16 = fractionsOfCodes(65536);
    return table16.data();
}

/// 0 for NaN.
float clamped(float value, float top) { return value > 0.0F ? std::min(value, top) : 0.0F; }

/// Looks up each sample in the table of its channel. Stores four floats at a time because single stores would
/// take longer than the look-ups.
template <std::size_t channels, class Sample>
void lookUp(const Sample* samples, std::size_t pixels, const float* const* tables, float* floats) {
    using FourFloats [[gnu::vector_size(4 * sizeof(float))]] = float;
    std::array<const float*, channels> table; // a local copy, which stores cannot alias
    std::copy_n(tables, channels, table.begin());
    const auto found = [&](std::size_t i) { return table[i % channels][samples[i]]; };
    for (; pixels >= 4; pixels -= 4, samples += 4 * channels, floats += 4 * channels)
        for (std::size_t i = 0; i < 4 * channels; i += 4) {
            const FourFloats four = {found(i), found(i + 1), found(i + 2), found(i + 3)};
            std::memcpy(floats + i, &four, sizeof four);
        }
    for (std::size_t i = 0; i < pixels * channels; ++i)
        floats[i] = found(i);
}

} // namespace

SampleConversion::SampleConversion(const RowFormat& in, std::uint32_t outWidth, SampleDepth outDepth,
                                   Light light, const ColorProfile* profile)
    : format_(in), outDepth_(outDepth),
      tables_(light == Light::linear ? toneTables(profile, in.model) : nullptr),
      decoders_(in.channels(), nullptr), indexes_(in.channels() * outWidth) {
    for (std::size_t c = 0; c < in.channels(); ++c) {
        const bool isLight = tables_ != nullptr && c < colors();
        if (!isLight)
            decoders_[c] = fractions(in.depth);
        else
            decoders_[c] =
                in.depth == SampleDepth::bits8 ? (*tables_)[c].light8.data() : (*tables_)[c].light16().data();
    }
}

void SampleConversion::toFloats(const std::uint8_t* samples, float* floats) const {
    if (format_.depth == SampleDepth::bits8)
        decode(samples, floats);
    else
        decode(reinterpret_cast<const std::uint16_t*>(samples), floats);
    if (format_.hasAlpha)
        multiplyByAlpha(floats);
}

template <class Sample>
void SampleConversion::decode(const Sample* samples, float* floats) const {
    switch (format_.channels()) {
    case 1:
        return lookUp<1>(samples, format_.width, decoders_.data(), floats);
    case 2:
        return lookUp<2>(samples, format_.width, decoders_.data(), floats);
    case 3:
        return lookUp<3>(samples, format_.width, decoders_.data(), floats);
    default:
        return lookUp<4>(samples, format_.width, decoders_.data(), floats);
    }
}

void SampleConversion::multiplyByAlpha(float* floats) const {
    for (std::size_t x = 0; x < format_.width; ++x, floats += format_.channels())
        for (std::size_t c = 0; c < colors(); ++c)
            floats[c] *= floats[colors()];
}

void SampleConversion::divideByAlpha(float* floats, std::size_t pixels) const {
    for (; pixels > 0; --pixels, floats += format_.channels()) {
        float& alpha = floats[colors()];
        alpha = clamped(alpha, 1.0F);
        for (std::size_t c = 0; c < colors(); ++c)
            floats[c] = alpha > 0 ? clamped(floats[c], alpha) / alpha : 0.0F;
    }
}

void SampleConversion::toSamples(float* floats, std::size_t pixels, std::uint8_t* samples) {
    if (format_.hasAlpha)
        divideByAlpha(floats, pixels);
    if (tables_ == nullptr)
        storeEncoded(floats, pixels * format_.channels(), samples);
    else if (outDepth_ == SampleDepth::bits8)
        storeLight8(floats, pixels, samples);
    else
        storeLight16(floats, pixels, reinterpret_cast<std::uint16_t*>(samples));
}

void SampleConversion::storeEncoded(const float* floats, std::size_t count, std::uint8_t* samples) {
    if (outDepth_ == SampleDepth::bits16)
        return kernels::linearIndexes(floats, count, 65535.0F, reinterpret_cast<std::uint16_t*>(samples));
    kernels::linearIndexes(floats, count, 255.0F, indexes_.data());
    std::transform(indexes_.begin(), indexes_.begin() + static_cast<std::ptrdiff_t>(count), samples,
                   [](std::uint16_t index) { return static_cast<std::uint8_t>(index); });
}

void SampleConversion::storeLight8(const float* floats, std::size_t pixels, std::uint8_t* samples) {
    const std::size_t channels = format_.channels();
    kernels::squareRootIndexes(floats, pixels * channels, topIndex, indexes_.data());
    for (std::size_t c = 0; c < colors(); ++c) {
        const std::uint8_t* table = (*tables_)[c].stored8.data();
        for (std::size_t i = c; i < pixels * channels; i += channels)
            samples[i] = table[indexes_[i]];
    }
    if (!format_.hasAlpha)
        return;
    for (std::size_t i = colors(); i < pixels * channels; i += channels)
        samples[i] = static_cast<std::uint8_t>(floats[i] * 255.0F + 0.5F);
}

void SampleConversion::storeLight16(const float* floats, std::size_t pixels, std::uint16_t* samples) const {
    const std::size_t channels = format_.channels();
    for (std::size_t c = 0; c < colors(); ++c) {
        const std::span<const float> table = (*tables_)[c].storedFraction();
        for (std::size_t i = c; i < pixels * channels; i += channels) {
            const float position = std::sqrt(clamped(floats[i], 1.0F)) * topIndex;
            const auto below = std::min(static_cast<std::size_t>(position), toneTableSize - 2);
            const float part = position - static_cast<float>(below);
            const float stored = table[below] + (table[below + 1] - table[below]) * part;
            samples[i] = static_cast<std::uint16_t>(stored * 65535.0F + 0.5F);
        }
    }
    if (!format_.hasAlpha)
        return;
    for (std::size_t i = colors(); i < pixels * channels; i += channels)
        samples[i] = static_cast<std::uint16_t>(floats[i] * 65535.0F + 0.5F);
}

} // namespace kestrine
