#include "platform/imageio/Picture.h"

#include <algorithm>
#include <utility>

namespace kestrine {

namespace {

Failure tooManyPixels() {
    return {Reason::tooLarge, "the result has more than " + std::to_string(maximumPixels()) + " pixels"};
}

/// Applies steps to a format.
struct FormatAfter {
    void operator()(const QuarterTurn&) { std::swap(result.width, result.height); }
    void operator()(const Resampling& resampling) {
        result.width = resampling.x.outSize;
        result.height = resampling.y.outSize;
    }
    void operator()(const Mirror&) {}
    void operator()(const Flatten&) { result.hasAlpha = false; }
    void operator()(const Pad& pad) {
        result.width += pad.left + pad.right;
        result.height += pad.top + pad.bottom;
    }
    void operator()(const IntoSRGB&) { result.model = ColorModel::rgb; }
    void operator()(const Fade&) { result.hasAlpha = true; }
    void operator()(const IntoGenericRGBA&) {
        result = {result.width, result.height, ColorModel::rgb, true, SampleDepth::bits8};
    }

    RowFormat result;
};

} // namespace

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
    const auto mirrorings = std::ranges::count(steps, PictureStep(Mirror{}));
    return mirrorings % 2 != 0
           || (turns(QuarterTurn::clockwise) - turns(QuarterTurn::counterclockwise)) % 4 != 0;
}

Picture Picture::with(PictureStep step) const {
    Picture result = *this;
    result.steps.push_back(step);
    return result;
}

std::optional<ColorProfile> profileAfter(const PictureStep& step, std::optional<ColorProfile> profile) {
    if (std::holds_alternative<IntoGenericRGBA>(step))
        return ColorProfile::genericRGB();
    return std::holds_alternative<IntoSRGB>(step) && profile ? ColorProfile::sRGB() : std::move(profile);
}

Result<FileContents> contentsOf(const std::shared_ptr<Source>& source) {
    if (source->codec() != nullptr && source->codec()->holdsOnePicture)
        return FileContents();
    const Bytes bytes = TRY(source->property({source, 0, {}}, PictureProperty::contents));
    if (const std::optional<FileContents> contents = contentsIn(bytes))
        return *contents;
    return Failure{Reason::malformed, "the decoder described the contents wrongly"};
}

Failure sideTooLong() {
    return {Reason::tooLarge,
            "a side of the result would be longer than " + std::to_string(maximumSide) + " pixels"};
}

Result<void> checkSize(std::uint64_t width, std::uint64_t height) {
    if (width == 0 || height == 0)
        return Failure{Reason::empty, "the result has no pixels"};
    if (width > maximumSide || height > maximumSide)
        return sideTooLong();
    return width * height <= maximumPixels() ? Result<void>() : tooManyPixels();
}

Result<void> checkSize(const Picture& picture) {
    TRY(checkSize(picture.width(), picture.height()));
    return picture.isWithinLimits() ? Result<void>() : tooManyPixels();
}

} // namespace kestrine
