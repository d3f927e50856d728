#include "platform/imageio/Render.h"

#include "platform/coregraphics/ColorConversion.h"
#include "platform/coregraphics/RowStages.h"
#include "platform/coregraphics/RowsAhead.h"
#include "platform/coregraphics/WatchedRows.h"
#include "platform/host/files/FileSink.h"
#include "platform/host/process/MemoryBudget.h"
#include "platform/imageio/Codecs.h"
#include "platform/imageio/LocalSource.h"
#include "platform/imageio/exif/ExifFacts.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace kestrine {

namespace {

/// `resampling` applies to a picture after `quarterTurns`. Returns the same resampling for the picture before
/// the turns, which has the given size.
Resampling beforeTurn(const Resampling& resampling, int quarterTurns, std::uint32_t width,
                      std::uint32_t height) {
    Resampling result = resampling;
    switch (quarterTurns) {
    case 1: // column x of the turned picture is row (height - 1 - x), its row y is column y
        result.x = resampling.y;
        result.y = resampling.x.mirrored(height);
        break;
    case 2:
        result.x = resampling.x.mirrored(width);
        result.y = resampling.y.mirrored(height);
        break;
    case 3: // column x of the turned picture is row x, its row y is column (width - 1 - y)
        result.x = resampling.y.mirrored(width);
        result.y = resampling.x;
        break;
    default:
        break;
    }
    return result;
}

/// The same for margins.
Pad beforeTurn(const Pad& pad, int quarterTurns) {
    Pad result = pad;
    for (; quarterTurns > 0; --quarterTurns)
        result = {result.top, result.right, result.bottom, result.left, pad.color};
    return result;
}

/// Builds the rows of a picture. Samples are rounded to 8 bits unless the file type `keeps16Bits`. Must
/// outlive the rows, since it holds the memory that is reserved for them.
class Pipeline {
public:
    /// `output` is null if no file is made of the rows.
    Pipeline(const Picture& picture, bool keeps16Bits, const Output* output)
        : picture_(picture), source_(static_cast<LocalSource&>(*picture.source)), keeps16Bits_(keeps16Bits),
          output_(output), profile_(picture.description().profile) {}

    Result<RowSourcePointer> build() {
        RowPlan plan = planRows(picture_);
        const bool isDecoded = source_.holdsPixels(picture_.frame);
        memory_ = TRY(budgetForHeldPictures().reserve(output_ == nullptr
                                                          ? bytesToHold(picture_, keeps16Bits_, isDecoded)
                                                          : bytesToEncode(picture_, *output_, isDecoded)));
        RowSourcePointer rows = TRY(decodedRows(plan));
        const bool isCostly = !picture_.description().isUncompressed && !source_.holdsPixels(picture_.frame);
        RowSourcePointer pipeline = isCostly ? rowsAhead(std::move(rows)) : std::move(rows);
        for (std::size_t i = 0; i < plan.steps.size(); ++i)
            pipeline = addStep(std::move(pipeline), plan.steps[i], i + 1 == plan.steps.size());
        if (!keeps16Bits_)
            pipeline = rowsOf8Bits(std::move(pipeline));
        if (plan.isMirrored)
            pipeline = mirroredRows(std::move(pipeline));
        return turnedRows(std::move(pipeline), plan.quarterTurns);
    }

private:
    /// Starts decoding in the size that suits the first step, which is adapted, or removed if nothing remains
    /// to be done.
    Result<RowSourcePointer> decodedRows(RowPlan& plan) const {
        if (picture_.description().isDrawn && !plan.steps.empty())
            if (const auto* first = std::get_if<Resampling>(&plan.steps.front())) {
                const Resampling drawn = *first;
                plan.steps.erase(plan.steps.begin());
                return source_.drawnRows(picture_.frame, drawn.x, drawn.y);
            }
        return source_.rows(picture_.frame, halve(plan));
    }

    /// If the first step is a reduction, lets the decoder do a part of it and adapts the step. Returns how
    /// often the decoder halves the sides.
    int halve(RowPlan& plan) const {
        if (plan.steps.empty() || source_.keepsPixels(picture_.frame))
            return 0;
        auto* first = std::get_if<Resampling>(&plan.steps.front());
        if (first == nullptr)
            return 0;
        const int halvings = decodingHalvings(*first, picture_.description().maxHalvings);
        first->x = first->x.afterHalvings(halvings);
        first->y = first->y.afterHalvings(halvings);
        return halvings;
    }

    RowSourcePointer addStep(RowSourcePointer rows, const PictureStep& step, bool isLast) {
        const auto before = std::exchange(profile_, profileAfter(step, profile_));
        const ColorProfile* profile = before ? &*before : nullptr;
        if (const auto* flatten = std::get_if<Flatten>(&step)) {
            const ColorSamples background = samplesOf(flatten->background, rows->format(), profile);
            return rowsOnBackground(std::move(rows), background);
        }
        if (const auto* pad = std::get_if<Pad>(&step)) {
            const ColorSamples color = samplesOf(pad->color, rows->format(), profile);
            return rowsWithMargins(std::move(rows), {pad->left, pad->top, pad->right, pad->bottom}, color);
        }
        if (std::holds_alternative<IntoSRGB>(step))
            return rowsInSRGB(std::move(rows), profile);
        if (const auto* fade = std::get_if<Fade>(&step))
            return rowsFaded(std::move(rows), fade->fraction);
        if (std::holds_alternative<IntoGenericRGBA>(step))
            return rowsInGenericRGBA(std::move(rows), profile);
        const SampleDepth depth = isLast && !keeps16Bits_ ? SampleDepth::bits8 : rows->format().depth;
        return resampledRows(std::move(rows), std::get<Resampling>(step), profile, depth);
    }

    const Picture& picture_;
    LocalSource& source_;
    const bool keeps16Bits_;
    const Output* const output_;
    std::optional<ColorProfile> profile_; ///< of the rows after the steps added so far
    MemoryReservation memory_;
};

/// For presets, the entries of a TIFF page count as EXIF data only if they say its origin.
bool isExifForPresets(const Source& source, ByteView block) {
    return source.codec() != &tiff::codec || readExifFacts(block).saysOrigin;
}

template <class Step>
bool hasStep(const Picture& picture) {
    return std::ranges::any_of(picture.steps,
                               [](const PictureStep& step) { return std::holds_alternative<Step>(step); });
}

/// The EXIF block for the result; empty if the result gets none.
Bytes exifFor(const Output& output, const ExifResult& result) {
    const ExifSelection selection = output.kept.exifSelection;
    if (!holdsExif(outputFormat(output.type), selection))
        return {};
    Bytes own;
    ByteView block = output.options.exif;
    if (output.kept.exif != nullptr) {
        if (Result<Bytes> read = output.kept.exif->property({}, PictureProperty::exif))
            own = std::move(*read);
        block = own;
        if (selection == ExifSelection::camera && !isExifForPresets(*output.kept.exif, block))
            return {};
    }
    return block.empty() ? Bytes() : carriedExif(block, result, selection);
}

/// Writes the file with the highest quality that has at most `maxBytes`.
Result<void> encodeToFit(RowSource& rows, const OutputFormat& format, EncodingOptions options,
                         std::uint64_t maxBytes, ByteSink& file) {
    const auto pixels = std::make_shared<const PixelBuffer>(TRY(readAllRows(rows)));
    const int highest = static_cast<int>(std::lround(options.percent()));
    const bool hasQuality = format.hasQuality && !options.isLossless;
    int tooHigh = hasQuality ? highest + 1 : 1;
    int fitting = -1;
    Bytes best;
    for (int percent = tooHigh - 1; tooHigh - fitting > 1; percent = (tooHigh + fitting) / 2) {
        options.quality = percent / 100.0;
        const RowSourcePointer again = rowsOfPixels(pixels);
        Bytes bytes = TRY(encoded(format.encode, *again, options));
        if (bytes.size() > maxBytes) {
            tooHigh = percent;
        } else {
            fitting = percent;
            best = std::move(bytes);
        }
    }
    if (fitting < 0)
        return Failure{Reason::tooLarge, (hasQuality ? "no quality gives" : "the format does not give")
                                             + std::string(" a file of at most ") + std::to_string(maxBytes)
                                             + (maxBytes == 1 ? " byte" : " bytes")};
    return file.write(best);
}

/// Decodes the picture and encodes it.
Result<void> renderTo(ByteSink& sink, const Picture& picture, const Output& output) {
    const OutputFormat& file = outputFormat(output.type);
    TRY(checkSize(picture));
    TRY(checkSize(picture.width(), picture.height(), file));
    const CrewScope crew(crewOfAllCores());
    Pipeline pipeline(picture, file.holds16Bits, &output);
    RowSourcePointer rows = rowsWatched(TRY(pipeline.build()));
    if (!file.holdsAlpha)
        rows = rowsOnWhite(std::move(rows));
    std::optional<ColorProfile> profile = picture.profile();
    const bool becomesSRGB = file.isSRGBOnly || (!file.holdsGray && rows->format().model == ColorModel::gray);
    if (becomesSRGB) {
        rows = rowsInSRGB(std::move(rows), profile ? &*profile : nullptr);
        profile.reset();
    }
    rows =
        rowsAhead(std::move(rows)); // encoding takes as long as half of the other work if little is reduced
    EncodingOptions options = output.options;
    if (output.kept.profile)
        options.profile = profile ? &*profile : nullptr;
    const Bytes exif = exifFor(output, {rows->format().width, rows->format().height, picture.wasTurned(),
                                        hasStep<Resampling>(picture) || hasStep<Pad>(picture),
                                        hasStep<IntoSRGB>(picture) || becomesSRGB});
    options.exif = exif;
    return output.maxBytes == 0 ? file.encode(*rows, options, sink)
                                : encodeToFit(*rows, file, options, output.maxBytes, sink);
}

Result<PixelBuffer> renderPixels(const Picture& picture) {
    TRY(checkSize(picture));
    const CrewScope crew(crewOfAllCores());
    Pipeline pipeline(picture, true, nullptr);
    const RowSourcePointer rows = TRY(pipeline.build());
    return readAllRows(*rows);
}

/// The source that makes a result. That of the EXIF data of an empty canvas is the only file.
Source& makerOf(const Picture& picture, const Output& output) {
    const bool isElsewhere = picture.source->isCanvas() && output.kept.exif != nullptr;
    return *(isElsewhere ? output.kept.exif : picture.source);
}

} // namespace

RowPlan planRows(const Picture& picture) {
    RowPlan plan;
    plan.quarterTurns = picture.description().quarterTurns;
    auto [width, height] = picture.description().storedSides();
    for (const PictureStep& step : picture.steps) {
        if (const auto* turn = std::get_if<QuarterTurn>(&step)) {
            plan.quarterTurns = (plan.quarterTurns + (*turn == QuarterTurn::clockwise ? 1 : 3)) % 4;
        } else if (std::holds_alternative<Mirror>(
                       step)) { // a turned picture mirrored is a mirrored one turned back
            plan.isMirrored = !plan.isMirrored;
            plan.quarterTurns = (4 - plan.quarterTurns) % 4;
        } else if (const auto* pad = std::get_if<Pad>(&step)) {
            Pad upright = beforeTurn(*pad, plan.quarterTurns);
            if (plan.isMirrored)
                std::swap(upright.left, upright.right);
            width += upright.left + upright.right;
            height += upright.top + upright.bottom;
            plan.steps.emplace_back(upright);
        } else if (const auto* resampling = std::get_if<Resampling>(&step)) {
            Resampling upright = beforeTurn(*resampling, plan.quarterTurns, width, height);
            if (plan.isMirrored)
                upright.x = upright.x.mirrored(width);
            width = upright.x.outSize;
            height = upright.y.outSize;
            plan.steps.emplace_back(upright);
        } else {
            plan.steps.push_back(step);
        }
    }
    return plan;
}

std::uint64_t bytesToHold(const Picture& picture, bool keeps16Bits, bool isDecoded, bool holdsResult) {
    RowFormat turned = picture.format();
    if (!keeps16Bits)
        turned.depth = SampleDepth::bits8;
    return (planRows(picture).quarterTurns == 0 ? 0 : turned.bytes()) + (holdsResult ? turned.bytes() : 0)
           + (isDecoded ? 0 : picture.description().heldBytes);
}

std::uint64_t bytesToEncode(const Picture& picture, const Output& output, bool isDecoded) {
    const OutputFormat& file = outputFormat(output.type);
    constexpr std::uint64_t bytesOfCoefficients = 3 * 2; // of a JPEG without subsampling
    const std::uint64_t perPixel =
        file.hasProgressive && output.options.isProgressive
            ? bytesOfCoefficients
            : file.heldBytesPerPixel[static_cast<std::size_t>(output.options.effort)];
    return bytesToHold(picture, file.holds16Bits, isDecoded, output.maxBytes != 0)
           + perPixel * picture.format().pixels();
}

int decodingHalvings(const Resampling& resampling, int maxHalvings) {
    const double needed = resampling.filter == ResampleFilter::lanczos ? 2.35 : 2;
    const double reduction = 1 / std::max(resampling.x.scale, resampling.y.scale);
    int halvings = maxHalvings;
    while (halvings > 0 && std::ldexp(reduction, -halvings) < needed)
        --halvings;
    return halvings;
}

Result<Bytes> render(const Picture& picture, const Output& output) {
    return makerOf(picture, output).rendered(picture, output);
}

Result<void> renderInto(int file, const Picture& picture, const Output& output) {
    return makerOf(picture, output).renderInto(file, picture, output);
}

Result<PixelBuffer> readPixels(const Picture& picture) { return picture.source->pixels(picture); }

Result<Bytes> LocalSource::rendered(const Picture& picture, const Output& output) {
    BytesSink bytes;
    TRY(orReadError(file_.get(), renderTo(bytes, picture, output)));
    return bytes.take();
}

Result<void> LocalSource::renderInto(int file, const Picture& picture, const Output& output) {
    FileSink sink(file);
    return orReadError(file_.get(), renderTo(sink, picture, output));
}

Result<PixelBuffer> LocalSource::pixels(const Picture& picture) {
    return orReadError(file_.get(), renderPixels(picture));
}

} // namespace kestrine
