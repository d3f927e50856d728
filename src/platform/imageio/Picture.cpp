#include "platform/imageio/Picture.h"

#include <algorithm>
#include <utility>

namespace kestrine {

namespace {

std::atomic<std::uint64_t> startedDecodes = 0;

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

Picture::Size Picture::size() const {
    Size size{description().format.width, description().format.height};
    for (const PictureStep& step : steps) {
        if (std::holds_alternative<QuarterTurn>(step))
            std::swap(size.width, size.height);
        else if (const auto* resampling = std::get_if<Resampling>(&step))
            size = {resampling->x.outSize, resampling->y.outSize};
    }
    return size;
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

} // namespace kestrine
