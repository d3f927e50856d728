// Converts rows of CMYK and Lab pixels to sRGB.

#include "platform/coregraphics/ColorConversion.h"

#include "platform/coregraphics/ColorManagement.h"

#include <algorithm>
#include <limits>
#include <vector>

namespace kestrine {

namespace {

/// R = (1 - C) (1 - K), and likewise G and B, rounded. If `isInverted`, the samples are the complements
/// already.
template <class Sample>
class ComplementConverter final : public ForeignConverter {
public:
    ComplementConverter(bool isInverted, bool alpha) : flip_(isInverted ? 0 : maximum), alpha_(alpha) {}

    void convert(const std::uint8_t* from, std::uint8_t* to, std::size_t pixels) override {
        const auto* in = reinterpret_cast<const Sample*>(from);
        auto* out = reinterpret_cast<Sample*>(to);
        for (std::size_t i = 0; i < pixels; ++i, in += 4 + alpha_, out += 3 + alpha_) {
            const std::uint32_t light = in[3] ^ flip_;
            for (std::size_t color = 0; color < 3; ++color)
                out[color] = times(in[color] ^ flip_, light);
            if (alpha_)
                out[3] = in[4];
        }
    }

private:
    static constexpr std::uint32_t maximum = std::numeric_limits<Sample>::max();

    /// a * b / maximum, rounded. Does not overflow: 65535 * 65535 + 32767 < 2^32.
    static Sample times(std::uint32_t a, std::uint32_t b) {
        return static_cast<Sample>((a * b + maximum / 2) / maximum);
    }

    const std::uint32_t flip_; ///< maximum - sample is sample ^ maximum
    const bool alpha_;
};

/// Converts CMYK by its profile.
class InkConverter final : public ForeignConverter {
public:
    explicit InkConverter(std::unique_ptr<TransformIntoRGB> transform) : transform_(std::move(transform)) {}

    void convert(const std::uint8_t* from, std::uint8_t* to, std::size_t pixels) override {
        transform_->convert(from, to, pixels);
    }

private:
    const std::unique_ptr<TransformIntoRGB> transform_;
};

/// Converts a* or b*. TIFF stores them as signed numbers (with 16 bits in 256ths); the colour library expects
/// them with an offset of 128 (with 16 bits in 257ths, so that the maximum is 127). L* has the same range in
/// both.
std::uint8_t shifted(std::uint8_t sample) { return sample ^ 0x80; }
std::uint16_t shifted(std::uint16_t sample) {
    const std::uint32_t in256ths = sample ^ 0x8000u;
    return static_cast<std::uint16_t>(std::min((in256ths * 257 + 128) / 256, 65535u));
}

template <class Sample>
class LabConverter final : public ForeignConverter {
public:
    LabConverter(std::unique_ptr<TransformIntoRGB> transform, bool alpha)
        : transform_(std::move(transform)), channels_(3 + alpha) {}

    void convert(const std::uint8_t* from, std::uint8_t* to, std::size_t pixels) override {
        const auto* in = reinterpret_cast<const Sample*>(from);
        samples_.assign(in, in + pixels * channels_);
        for (std::size_t i = 0; i < samples_.size(); i += channels_) {
            samples_[i + 1] = shifted(samples_[i + 1]);
            samples_[i + 2] = shifted(samples_[i + 2]);
        }
        transform_->convert(reinterpret_cast<const std::uint8_t*>(samples_.data()), to, pixels);
    }

private:
    const std::unique_ptr<TransformIntoRGB> transform_;
    const std::size_t channels_;
    std::vector<Sample> samples_;
};

template <class Sample>
std::unique_ptr<ForeignConverter> inkConverter(bool isInverted, SampleDepth depth, bool alpha, ByteView icc) {
    const auto from = pixelFormat(PT_CMYK, 4, depth, alpha) | FLAVOR_SH(isInverted ? 1u : 0u);
    const auto to = pixelFormat(PT_RGB, 3, depth, alpha);
    // The library may prepare a table (25 ms, then 42 ns instead of 250 ns per pixel): profiles of printers
    // are coarse tables themselves, and their pictures are large.
    constexpr cmsUInt32Number flags = 0;
    if (auto transform = TransformIntoRGB::ofProfile(icc, cmsSigCmykData, from, to, flags))
        return std::make_unique<InkConverter>(std::move(transform));
    return std::make_unique<ComplementConverter<Sample>>(isInverted, alpha);
}

template <class Sample>
std::unique_ptr<ForeignConverter> labConverter(SampleDepth depth, bool alpha, ByteView icc) {
    const auto from = pixelFormat(PT_Lab, 3, depth, alpha);
    const auto to = pixelFormat(PT_RGB, 3, depth, alpha);
    // A prepared table would be wrong by up to 50 levels.
    constexpr cmsUInt32Number flags = cmsFLAGS_NOOPTIMIZE;
    auto transform = TransformIntoRGB::ofProfile(icc, cmsSigLabData, from, to, flags);
    if (!transform)
        transform = TransformIntoRGB::ofLab(from, to, flags);
    return std::make_unique<LabConverter<Sample>>(std::move(transform), alpha);
}

template <class Sample>
std::unique_ptr<ForeignConverter> converter(ForeignModel model, SampleDepth depth, bool alpha, ByteView icc) {
    if (model == ForeignModel::lab)
        return labConverter<Sample>(depth, alpha, icc);
    return inkConverter<Sample>(model == ForeignModel::cmykInverted, depth, alpha, icc);
}

} // namespace

std::unique_ptr<ForeignConverter> ForeignConverter::create(ForeignModel model, SampleDepth depth, bool alpha,
                                                           ByteView icc) {
    if (depth == SampleDepth::bits8)
        return converter<std::uint8_t>(model, depth, alpha, icc);
    return converter<std::uint16_t>(model, depth, alpha, icc);
}

} // namespace kestrine
