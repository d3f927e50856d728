#include "platform/imageio/Render.h"

#include "platform/host/process/MemoryBudget.h"
#include "platform/imageio/Codecs.h"
#include "platform/imageio/LocalSource.h"
#include "platform/imageio/Plausibility.h"
#include "tests/support/Pictures.h"

namespace kestrine {

using testing::makePhoto;
using testing::samePicture;

namespace {

RowFormat photoFormat(std::uint32_t width, std::uint32_t height) {
    return {width, height, ColorModel::rgb, false, SampleDepth::bits8};
}

/// A TIFF with the pixels: the only format that keeps every layout exactly.
std::shared_ptr<LocalSource> sourceOf(const PixelBuffer& pixels) {
    const auto rows = rowsOfPixels(std::make_shared<PixelBuffer>(pixels));
    return *LocalSource::open(readerOfBytes(*encoded(tiff::encode, *rows, {})));
}

PixelBuffer turnedClockwise(const PixelBuffer& source) {
    RowFormat format = source.format;
    std::swap(format.width, format.height);
    return testing::makePicture(format, [&](std::uint32_t x, std::uint32_t y, std::size_t c) {
        return testing::sampleAt(source, y, source.format.height - 1 - x, c);
    });
}

/// A file whose rows are to be turned after decoding.
class TurnedFile final : public ImageDecoder {
public:
    TurnedFile(PixelBuffer stored, int quarterTurns)
        : stored_(std::make_shared<const PixelBuffer>(std::move(stored))) {
        RowFormat format = stored_->format;
        if (quarterTurns % 2 != 0)
            std::swap(format.width, format.height);
        frames_.push_back({.format = format, .quarterTurns = quarterTurns});
    }

    Result<RowSourcePointer> rows(std::size_t, int) const override { return rowsOfPixels(stored_); }

private:
    const std::shared_ptr<const PixelBuffer> stored_;
};

std::shared_ptr<LocalSource> turnedSource(const PixelBuffer& stored, int quarterTurns) {
    return std::make_shared<LocalSource>(std::make_unique<TurnedFile>(stored, quarterTurns),
                                         readerOfBytes({}));
}

/// A JPEG of a photo, which can be decoded at a reduced size.
std::shared_ptr<LocalSource> jpegSource(std::uint32_t width, std::uint32_t height) {
    const auto rows = rowsOfPixels(std::make_shared<PixelBuffer>(makePhoto(photoFormat(width, height))));
    return *LocalSource::open(readerOfBytes(*encoded(jpeg::encode, *rows, {.quality = 1})));
}

PixelBuffer decodedAt(const std::shared_ptr<LocalSource>& source, int halvings) {
    return *readAllRows(**source->rows(0, halvings));
}

/// Cuts 11 and 23 pixels off 403 x 301 and reduces the rest.
Resampling reductionOfAPart(double factor) {
    const auto map = [factor](double side, double cut) {
        return AxisMap{1 / factor, cut, static_cast<std::uint32_t>((side - cut) / factor)};
    };
    return {map(403, 11), map(301, 23), ResampleFilter::lanczos, Light::linear};
}

/// The same for a source whose sides were halved that often.
Resampling ofReduced(Resampling resampling, int halvings) {
    const double part = 1.0 / (1 << halvings);
    for (AxisMap* map : {&resampling.x, &resampling.y}) {
        map->scale /= part;
        map->offset *= part;
    }
    return resampling;
}

struct ReductionCase {
    double factor;
    int halvings;
};
constexpr ReductionCase reductions[] = {{3, 0}, {5, 1}, {10, 2}, {20, 3}};

const Resampling half = {{0.5, 0, 10}, {0.5, 1, 14}, ResampleFilter::lanczos, Light::linear};

} // namespace

TEST(Render, aPictureWithoutStepsIsItsSource) {
    const PixelBuffer photo = makePhoto(photoFormat(20, 30));
    const Picture picture{sourceOf(photo), 0, {}};
    EXPECT_TRUE(samePicture(*readPixels(picture), photo));
    EXPECT_FALSE(picture.wasTurned());
}

TEST(Render, oneQuarterTurnTurnsThePictureAndFourRestoreIt) {
    const PixelBuffer photo = makePhoto(photoFormat(7, 5));
    Picture picture{sourceOf(photo), 0, {QuarterTurn::clockwise}};
    EXPECT_EQ(picture.width(), 5U);
    EXPECT_EQ(picture.height(), 7U);
    EXPECT_TRUE(picture.wasTurned());
    EXPECT_TRUE(samePicture(*readPixels(picture), turnedClockwise(photo)));
    EXPECT_TRUE(samePicture(*readPixels(picture.with(QuarterTurn::counterclockwise)), photo));
    picture = picture.with(QuarterTurn::clockwise).with(QuarterTurn::clockwise);
    EXPECT_TRUE(samePicture(*readPixels(picture.with(QuarterTurn::clockwise)), photo));
    EXPECT_TRUE(samePicture(turnedClockwise(*readPixels(picture)), photo));
}

TEST(Render, oppositeTurnsCancelEachOther) {
    constexpr QuarterTurn right = QuarterTurn::clockwise, left = QuarterTurn::counterclockwise;
    const std::pair<std::vector<PictureStep>, bool> rows[] = {
        {{right, left}, false},
        {{left, Flatten{}, right}, false},
        {{right, right, right, right}, false},
        {{right, right, left}, true},
        {{left, left}, true},
        {{left, left, left}, true},
    };
    const auto source = sourceOf(makePhoto(photoFormat(7, 5)));
    for (const auto& [steps, turned] : rows)
        EXPECT_EQ((Picture{source, 0, steps}.wasTurned()), turned) << steps.size() << " steps";
}

TEST(Render, turnsThatTheFileAsksForAreDoneWithoutBeingSteps) {
    const PixelBuffer stored = makePhoto(photoFormat(20, 30));
    PixelBuffer shown = stored;
    for (int turns = 0; turns < 4; ++turns, shown = turnedClockwise(shown)) {
        const Picture asStored{sourceOf(shown), 0, {half, QuarterTurn::clockwise}};
        const Picture turned{turnedSource(stored, turns), 0, {half, QuarterTurn::clockwise}};
        EXPECT_EQ(turned.description().format, shown.format);
        EXPECT_TRUE(samePicture(*readPixels({turned.source, 0, {}}), shown)) << turns << " turns";
        EXPECT_TRUE(samePicture(*readPixels(turned), *readPixels(asStored), 1)) << turns << " turns";
        EXPECT_FALSE((Picture{turned.source, 0, {}}.wasTurned()));
    }
}

TEST(Render, scalingATurnedPictureEqualsTurningFirstForEveryTurn) {
    PixelBuffer turned = makePhoto(photoFormat(20, 30));
    Picture picture{sourceOf(turned), 0, {}};
    for (int turns = 0; turns < 4; ++turns) {
        Resampling scaling = half;
        if (turns % 2 != 0)
            scaling = {{0.5, 0, 14}, {0.5, 1, 9}, half.filter, half.light};
        const Picture turnedFirst{sourceOf(turned), 0, {scaling}};
        EXPECT_TRUE(samePicture(*readPixels(picture.with(scaling)), *readPixels(turnedFirst), 1))
            << turns << " turns";
        picture = picture.with(QuarterTurn::clockwise);
        turned = turnedClockwise(turned);
    }
}

TEST(Render, mirroringExchangesLeftAndRight) {
    const PixelBuffer photo = makePhoto(photoFormat(7, 5));
    const Picture mirrored{sourceOf(photo), 0, {Mirror{}}};
    EXPECT_TRUE(mirrored.wasTurned());
    const PixelBuffer pixels = *readPixels(mirrored);
    for (std::uint32_t x = 0; x < 7; ++x)
        EXPECT_EQ(testing::sampleAt(pixels, x, 3, 1), testing::sampleAt(photo, 6 - x, 3, 1));
    EXPECT_FALSE(mirrored.with(Mirror{}).wasTurned());
    EXPECT_TRUE(samePicture(*readPixels(mirrored.with(Mirror{})), photo));
}

TEST(Render, turnsMirroringsAndMarginsInAnyOrderEqualOneStepAfterTheOther) {
    const PictureStep steps[] = {QuarterTurn::clockwise, Mirror{}, QuarterTurn::counterclockwise,
                                 Pad{1, 2, 3, 4, {10, 200, 30}}};
    for (unsigned sequence = 0; sequence < 256; ++sequence) {
        PixelBuffer expected = makePhoto(photoFormat(5, 3));
        Picture picture{sourceOf(expected), 0, {}};
        for (unsigned i = 0; i < 4; ++i) {
            const PictureStep& step = steps[sequence >> 2 * i & 3];
            picture = picture.with(step);
            expected = *readPixels(Picture{sourceOf(expected), 0, {step}});
        }
        EXPECT_TRUE(samePicture(*readPixels(picture), expected)) << "sequence " << sequence;
    }
}

TEST(Render, scalingAMirroredPictureEqualsMirroringFirst) {
    const PixelBuffer photo = makePhoto(photoFormat(20, 30));
    for (const QuarterTurn turn : {QuarterTurn::clockwise, QuarterTurn::counterclockwise}) {
        const Resampling scaling = {{0.5, 3, 12}, {0.5, 1, 9}, half.filter, half.light};
        const Picture laid{sourceOf(photo), 0, {Mirror{}, turn}};
        const Picture done{sourceOf(*readPixels(laid)), 0, {scaling}};
        EXPECT_TRUE(samePicture(*readPixels(laid.with(scaling)), *readPixels(done), 1));
    }
}

TEST(Render, aFileThatMustFitHasTheHighestQualityThatDoes) {
    const Picture picture{sourceOf(makePhoto(photoFormat(60, 40))), 0, {}};
    const auto sizeAt = [&](double quality) {
        return render(picture, {FileType::jpeg, {.quality = quality}})->size();
    };
    const auto fitting = [&](std::uint64_t maxBytes, double quality) {
        return render(picture, {FileType::jpeg, {.quality = quality}, {}, maxBytes});
    };
    EXPECT_EQ(fitting(sizeAt(0.6), 1)->size(), sizeAt(0.6));
    EXPECT_EQ(fitting(sizeAt(0) + 1, 1)->size(), sizeAt(0));
    EXPECT_EQ(fitting(1 << 20, 0.7)->size(), sizeAt(0.7));
    EXPECT_EQ(fitting(100, 1).failure().reason, Reason::tooLarge);
    EXPECT_EQ(render(picture, {FileType::png, {}, {}, 100}).failure().reason, Reason::tooLarge);
    EXPECT_TRUE(render(picture, {FileType::png, {}, {}, 1 << 20}).ok());
}

TEST(Render, turnsAreDoneAfterAllScaling) {
    const Picture picture{
        sourceOf(makePhoto(photoFormat(20, 30))), 0, {QuarterTurn::clockwise, half, Flatten{}}};
    const RowPlan plan = planRows(picture);
    EXPECT_EQ(plan.quarterTurns, 1);
    ASSERT_EQ(plan.steps.size(), 2U);
    const auto& scaling = std::get<Resampling>(plan.steps[0]);
    EXPECT_EQ(scaling.x, half.y);
    // The right edge of the turned picture is the top of the stored one: 30 pixels, of which 20 are covered.
    EXPECT_EQ(scaling.y, (AxisMap{0.5, 10, 10}));
    EXPECT_EQ(plan.steps[1], PictureStep(Flatten{}));
}

TEST(Render, keptPixelsAreDecodedOnceForAnyNumberOfResults) {
    const auto source = sourceOf(makePhoto(photoFormat(20, 30)));
    source->keepPixels();
    const Picture picture{source, 0, {}};
    const std::uint64_t before = LocalSource::decodesStarted();
    ASSERT_TRUE(readPixels(picture).ok());
    ASSERT_TRUE(render(picture.with(half), {FileType::png, {}}).ok());
    ASSERT_TRUE(render(picture, {FileType::gif, {}}).ok());
    EXPECT_EQ(LocalSource::decodesStarted() - before, 1U);
}

TEST(Render, pixelsWithoutMemoryToKeepThemAreDecodedForEachResult) {
    const auto file = makePhoto(photoFormat(20, 30));
    const auto keeping = sourceOf(file), decoding = sourceOf(file);
    keeping->keepPixels();
    decoding->keepPixels();
    const Bytes expected = *render({keeping, 0, {half}}, {FileType::png, {}});
    budgetForKeptPictures().setLimit(20 * 30 * 3 - 1);
    const std::uint64_t before = LocalSource::decodesStarted();
    for (int i = 0; i < 2; ++i)
        EXPECT_EQ(*render({decoding, 0, {half}}, {FileType::png, {}}), expected);
    EXPECT_EQ(LocalSource::decodesStarted() - before, 2U);
    EXPECT_FALSE(decoding->holdsPixels(0));
    budgetForKeptPictures().setLimit(std::nullopt);
}

TEST(Render, memoryOfKeptPixelsIsGivenBackWithTheSource) {
    budgetForKeptPictures().setLimit(20 * 30 * 3);
    for (int i = 0; i < 2; ++i) {
        const auto source = sourceOf(makePhoto(photoFormat(20, 30)));
        source->keepPixels();
        EXPECT_TRUE(readPixels({source, 0, {}}).ok());
        EXPECT_TRUE(source->holdsPixels(0));
    }
    budgetForKeptPictures().setLimit(std::nullopt);
}

TEST(Render, anUnscaledTurnNeedsMemoryForThePicture) {
    const auto source = sourceOf(makePhoto(photoFormat(20, 30)));
    const Picture turned = Picture{source, 0, {}}.with(QuarterTurn::clockwise);
    budgetForHeldPictures().setLimit(20 * 30 * 3 - 1);
    EXPECT_EQ(render(turned, {FileType::png, {}}).failure().reason, Reason::tooLarge);
    EXPECT_TRUE(render(turned.with(QuarterTurn::counterclockwise), {FileType::png, {}}).ok());
    budgetForHeldPictures().setLimit(20 * 30 * 3);
    EXPECT_TRUE(render(turned, {FileType::png, {}}).ok());
    EXPECT_TRUE(render(turned, {FileType::png, {}}).ok()) << "the memory is given back";
    budgetForHeldPictures().setLimit(std::nullopt);
}

TEST(Render, theLargePictureOfASmallFileIsNotWorthKeeping) {
    const RowFormat large{20'000, 10'000, ColorModel::gray};
    EXPECT_FALSE(isWorthKeeping(large, large.bytes() / 128 - 1));
    EXPECT_TRUE(isWorthKeeping(large, large.bytes() / 128));
    EXPECT_TRUE(isWorthKeeping({10'000, 10'000, ColorModel::gray}, 1));
}

TEST(Render, resultsBeyondTheSetLimitAreRefused) {
    const auto source = sourceOf(makePhoto(photoFormat(20, 30)));
    setMaximumPixels(20 * 30 - 1);
    EXPECT_EQ(render({source, 0, {}}, {FileType::png, {}}).failure().text,
              "the result has more than 599 pixels");
    setMaximumPixels(defaultMaximumPixels);
}

TEST(Render, whatIsTooLargeToBeHeldIsNotKept) {
    RowFormat format{40000, 20000, ColorModel::rgb, true, SampleDepth::bits16};
    EXPECT_FALSE(format.canBeBuffered());
    format.depth = SampleDepth::bits8;
    format.hasAlpha = false;
    EXPECT_FALSE(format.canBeBuffered());
    format.height = 17000;
    EXPECT_TRUE(format.canBeBuffered());
}

TEST(Render, aResultWithoutPixelsOrWithTooManyIsRefusedBeforeDecoding) {
    const Picture picture{sourceOf(makePhoto(photoFormat(20, 30))), 0, {}};
    const std::uint64_t before = LocalSource::decodesStarted();
    const AxisMap none{1, 0, 0}, huge{3000, 0, 60000};
    EXPECT_EQ(render(picture.with(Resampling{none, none, {}, {}}), {FileType::png, {}}).failure().reason,
              Reason::empty);
    EXPECT_EQ(render(picture.with(Resampling{huge, huge, {}, {}}), {FileType::png, {}}).failure().reason,
              Reason::tooLarge);
    const Picture smallAgain = picture.with(Resampling{huge, huge, {}, {}}).with(half);
    EXPECT_EQ(readPixels(smallAgain).failure().reason, Reason::tooLarge)
        << "an intermediate picture is too large";
    EXPECT_EQ(LocalSource::decodesStarted(), before);
}

TEST(Render, theReducedDecodeLeavesEnoughPixelsForTheFilter) {
    const auto halvingsFor = [](double reduction, ResampleFilter filter, int max = 3) {
        return decodingHalvings({{1 / reduction, 0, 1}, {1 / reduction, 0, 1}, filter, Light::linear}, max);
    };
    EXPECT_EQ(halvingsFor(4.69, ResampleFilter::lanczos), 0);
    EXPECT_EQ(halvingsFor(4.71, ResampleFilter::lanczos), 1);
    EXPECT_EQ(halvingsFor(9.41, ResampleFilter::lanczos), 2);
    EXPECT_EQ(halvingsFor(18.9, ResampleFilter::lanczos), 3);
    EXPECT_EQ(halvingsFor(100, ResampleFilter::lanczos), 3);
    EXPECT_EQ(halvingsFor(100, ResampleFilter::lanczos, 0), 0);
    EXPECT_EQ(halvingsFor(100, ResampleFilter::lanczos, 9), 5);
    EXPECT_EQ(halvingsFor(3.99, ResampleFilter::triangle), 0);
    EXPECT_EQ(halvingsFor(4.01, ResampleFilter::triangle), 1);
    EXPECT_EQ(halvingsFor(0.5, ResampleFilter::triangle), 0);
    EXPECT_EQ(decodingHalvings({{0.1, 0, 1}, {0.9, 0, 1}, ResampleFilter::lanczos, Light::linear}, 3), 0)
        << "the axis that is reduced least decides";
}

TEST(Render, aReductionUsesTheReducedDecodeThatItsFactorAllows) {
    const auto source = jpegSource(403, 301);
    for (const auto& [factor, halvings] : reductions) {
        const Resampling reduction = reductionOfAPart(factor);
        const Picture fromReduced{sourceOf(decodedAt(source, halvings)), 0, {ofReduced(reduction, halvings)}};
        EXPECT_TRUE(samePicture(*readPixels({source, 0, {reduction}}), *readPixels(fromReduced))) << factor;
    }
}

TEST(Render, aReducedDecodeGivesNearlyTheSamePictureAsAFullOne) {
    const auto source = jpegSource(403, 301);
    const auto full = sourceOf(decodedAt(source, 0));
    for (const auto& [factor, halvings] : reductions)
        for (const QuarterTurn turn : {QuarterTurn::clockwise, QuarterTurn::counterclockwise}) {
            const std::vector<PictureStep> steps = {reductionOfAPart(factor), turn};
            EXPECT_TRUE(samePicture(*readPixels({source, 0, steps}), *readPixels({full, 0, steps}), 5))
                << factor;
        }
}

TEST(Render, theDecodeIsFullWhenAnotherStepComesFirstOrPixelsAreKept) {
    const auto source = jpegSource(403, 301);
    const auto full = sourceOf(decodedAt(source, 0));
    const std::vector<PictureStep> steps = {Fade{1}, reductionOfAPart(20)};
    EXPECT_TRUE(samePicture(*readPixels({source, 0, steps}), *readPixels({full, 0, steps})));
    source->keepPixels();
    const std::vector<PictureStep> reduction = {reductionOfAPart(20)};
    EXPECT_TRUE(samePicture(*readPixels({source, 0, reduction}), *readPixels({full, 0, reduction})));
}

TEST(Render, aTransparentPictureBecomesWhiteInAFormatWithoutAlpha) {
    RowFormat format = photoFormat(16, 16);
    format.hasAlpha = true;
    const PixelBuffer clear =
        testing::makePicture(format, [](auto, auto, std::size_t c) { return c == 3 ? 0U : 90U; });
    const auto jpeg = render({sourceOf(clear), 0, {}}, {FileType::jpeg, {.quality = 1}});
    ASSERT_TRUE(jpeg.ok());
    const PixelBuffer decoded = *readPixels({*LocalSource::open(readerOfBytes(*jpeg)), 0, {}});
    EXPECT_TRUE(samePicture(
        decoded, testing::makePicture(photoFormat(16, 16), [](auto, auto, auto) { return 255U; })));
}

} // namespace kestrine
