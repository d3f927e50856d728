// SampleConversion: converts rows of stored samples to floats for filtering, and back.
#pragma once

#include "platform/coregraphics/ColorProfile.h"
#include "platform/coregraphics/RowFormat.h"
#include "platform/coregraphics/ToneCurve.h"

#include <memory>
#include <vector>

namespace kestrine {

/// What the filter adds up.
enum class Light : std::uint8_t {
    linear, ///< linear light, by the tone curves of the picture
    stored, ///< the stored values
};

/// Floats are from 0 to 1, and colour is multiplied by alpha. One thread at a time, except that
/// toFloats() and toSamples() may run on different threads.
class SampleConversion {
public:
    /// Converts source rows with format `in` into result rows with `outDepth` and at most `outWidth` pixels.
    /// `profile` is that of the picture, null for sRGB.
    SampleConversion(const RowFormat& in, std::uint32_t outWidth, SampleDepth outDepth, Light light,
                     const ColorProfile* profile);

    /// Converts a source row to as many floats as it has samples.
    void toFloats(const std::uint8_t* samples, float* floats) const;

    /// Converts `pixels` pixels back. Alpha is clamped to 0..1 and colour to 0..alpha, then colour is divided
    /// by alpha; where alpha is 0, colour is 0. `floats` is overwritten.
    void toSamples(float* floats, std::size_t pixels, std::uint8_t* samples);

private:
    template <class Sample>
    void decode(const Sample* samples, float* floats) const;
    void multiplyByAlpha(float* floats) const;
    void divideByAlpha(float* floats, std::size_t pixels) const;
    void storeLight8(const float* floats, std::size_t pixels, std::uint8_t* samples);
    void storeLight16(const float* floats, std::size_t pixels, std::uint16_t* samples) const;
    void storeEncoded(const float* floats, std::size_t count, std::uint8_t* samples);
    std::size_t colors() const { return format_.colorChannels(); }

    const RowFormat format_;
    const SampleDepth outDepth_;
    const std::shared_ptr<const ToneTables> tables_; ///< null for Light::stored
    std::vector<const float*> decoders_;             ///< by channel: the float for each code
    std::vector<std::uint16_t> indexes_;
};

} // namespace kestrine
