// SampleConversion: rows of stored samples as rows of floats that a filter may add up, and back.
#pragma once

#include "platform/coregraphics/ColorProfile.h"
#include "platform/coregraphics/RowFormat.h"
#include "platform/coregraphics/ToneCurve.h"

#include <memory>
#include <vector>

namespace kestrine {

/// In what the samples are added up.
enum class Light : std::uint8_t {
    linear, ///< the light that the picture's tone curves stand for
    stored, ///< the stored encoding itself
};

/// Floats run from 0 to 1, colour multiplied by alpha. Used by one thread at a time.
class SampleConversion {
public:
    /// Rows of `in` come; `profile` is the picture's own, null for sRGB. Rows of at most `outWidth` pixels go
    /// back, with `outDepth`.
    SampleConversion(const RowFormat& in, std::uint32_t outWidth, SampleDepth outDepth, Light light,
                     const ColorProfile* profile);

    /// A row of `in` into channels() floats a pixel.
    void toFloats(const std::uint8_t* samples, float* floats) const;

    /// The way back for `pixels` pixels: alpha is held to 0..1, colour to 0..alpha, then divided by alpha;
    /// what has no alpha left is 0. `floats` is overwritten.
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
    const std::shared_ptr<const ToneTables> tables_; ///< null when the stored encoding is added up
    std::vector<const float*> decoders_;             ///< by channel: the float for each code
    std::vector<std::uint16_t> indexes_;
};

} // namespace kestrine
