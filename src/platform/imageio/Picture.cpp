#include "platform/imageio/Picture.h"

#include "platform/host/process/MemoryBudget.h"
#include "platform/imageio/Plausibility.h"

#include <algorithm>
#include <utility>

namespace kestrine {

namespace {

std::atomic<std::uint64_t> startedDecodes = 0;

/// Applies steps to a format.
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

class ClearRows final : public RowSource {
public:
    explicit ClearRows(const RowFormat& format) : RowSource(format) {}

    Result<void> readRow(std::span<std::uint8_t> row) override {
        std::ranges::fill(row, std::uint8_t{0});
        return {};
    }
};

class ClearCanvas final : public ImageDecoder {
public:
    ClearCanvas(std::uint32_t width, std::uint32_t height) {
        frames_.push_back({.format = {width, height, ColorModel::rgb, true, SampleDepth::bits8}});
    }

    Result<RowSourcePointer> rows(std::size_t frame, int) const override {
        return RowSourcePointer(std::make_unique<ClearRows>(frames_[frame].format));
    }
};

struct KeptPixels {
    MemoryReservation memory;
    PixelBuffer pixels;
};

} // namespace

Result<std::shared_ptr<Source>> Source::open(std::shared_ptr<const ByteReader> reader) {
    std::unique_ptr<ImageDecoder> decoder = TRY(openImage(reader));
    return std::shared_ptr<Source>(new Source(std::move(decoder), reader->size()));
}

std::shared_ptr<Source> Source::clear(std::uint32_t width, std::uint32_t height) {
    return std::shared_ptr<Source>(new Source(std::make_unique<ClearCanvas>(width, height), 0));
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
    if (kept_[frame] == nullptr)
        kept_[frame] = TRY(decodeToKeep(frame));
    return kept_[frame] ? rowsOfPixels(kept_[frame]) : decode(frame, 8);
}

Result<std::shared_ptr<const PixelBuffer>> Source::decodeToKeep(std::size_t frame) const {
    const RowFormat& format = frames()[frame].format;
    if (!isWorthKeeping(format, fileBytes_))
        return std::shared_ptr<const PixelBuffer>();
    std::optional<MemoryReservation> memory = budgetForKeptPictures().tryReserve(format.bytes());
    if (!memory)
        return std::shared_ptr<const PixelBuffer>();
    RowSourcePointer decoded = TRY(decode(frame, 8));
    PixelBuffer pixels = TRY(readAllRows(*decoded));
    const auto kept = std::make_shared<const KeptPixels>(*std::move(memory), std::move(pixels));
    return std::shared_ptr<const PixelBuffer>(kept, &kept->pixels);
}

bool Source::holdsPixels(std::size_t frame) {
    const std::lock_guard lock(mutex_);
    return kept_[frame] != nullptr;
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

bool Picture::isWithinLimits() const {
    FormatAfter format{description().format};
    return format.result.isWithinLimits() && std::ranges::all_of(steps, [&format](const PictureStep& step) {
               std::visit(format, step);
               return format.result.isWithinLimits();
           });
}

bool Picture::wasTurned() const {
    const auto turns = [this](QuarterTurn turn) { return std::ranges::count(steps, PictureStep(turn)); };
    return (turns(QuarterTurn::clockwise) - turns(QuarterTurn::counterclockwise)) % 4 != 0;
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
