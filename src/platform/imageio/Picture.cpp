#include "platform/imageio/Picture.h"

#include <algorithm>
#include <utility>

namespace kestrine {

namespace {

std::atomic<std::uint64_t> startedDecodes = 0;

/// Follows the format from step to step.
struct FormatAfter {
    void operator()(const QuarterTurn&) { std::swap(result.width, result.height); }
    void operator()(const Resampling& resampling) {
        result.width = resampling.x.outSize;
        result.height = resampling.y.outSize;
    }
    void operator()(const Flatten&) { result.hasAlpha = false; }
    void operator()(const Fade&) { result.hasAlpha = true; }
    void operator()(const IntoGenericRGBA&) {
        result = {result.width, result.height, ColorModel::rgb, true, SampleDepth::bits8};
    }

    RowFormat result;
};

} // namespace

Result<std::shared_ptr<Source>> Source::open(std::shared_ptr<const ByteReader> reader) {
    Result<std::unique_ptr<ImageDecoder>> decoder = openImage(std::move(reader));
    if (!decoder)
        return decoder.failure();
    return std::shared_ptr<Source>(new Source(std::move(*decoder)));
}

std::uint64_t Source::decodesStarted() { return startedDecodes; }

Result<RowSourcePointer> Source::decode(std::size_t frame, int eighths) const {
    ++startedDecodes;
    return decoder_->rows(frame, eighths);
}

Result<RowSourcePointer> Source::rows(std::size_t frame, int eighths) {
    if (!keepsPixels(frame))
        return decode(frame, eighths);
    const std::lock_guard lock(mutex_);
    std::shared_ptr<const PixelBuffer>& kept = kept_[frame];
    if (kept == nullptr) {
        Result<RowSourcePointer> decoded = decode(frame, 8);
        if (!decoded)
            return decoded;
        Result<PixelBuffer> pixels = readAllRows(**decoded);
        if (!pixels)
            return pixels.failure();
        kept = std::make_shared<const PixelBuffer>(std::move(*pixels));
    }
    return rowsOfPixels(kept);
}

RowFormat Picture::format() const {
    FormatAfter format{description().format};
    for (const PictureStep& step : steps)
        std::visit(format, step);
    return format.result;
}

std::optional<ColorProfile> Picture::profile() const {
    std::optional<ColorProfile> profile = description().profile;
    for (const PictureStep& step : steps)
        profile = profileAfter(step, std::move(profile));
    return profile;
}

bool Picture::wasTurned() const {
    return std::ranges::any_of(
        steps, [](const PictureStep& step) { return std::holds_alternative<QuarterTurn>(step); });
}

Picture Picture::with(PictureStep step) const {
    Picture result = *this;
    result.steps.push_back(step);
    return result;
}

std::optional<ColorProfile> profileAfter(const PictureStep& step, std::optional<ColorProfile> profile) {
    return std::holds_alternative<IntoGenericRGBA>(step) ? ColorProfile::genericRGB() : std::move(profile);
}

} // namespace kestrine
