#include "platform/coregraphics/Resampler.h"

#include "tests/support/Pictures.h"
#include "tests/support/WholeImageResampler.h"

namespace kestrine {

using testing::makePhoto;
using testing::makePicture;
using testing::resampledWhole;
using testing::samePicture;
using testing::sampleAt;

namespace {

PixelBuffer resampled(const PixelBuffer& source, const Resampling& resampling, SampleDepth outDepth) {
    const auto rows =
        resampledRows(rowsOfPixels(std::make_shared<PixelBuffer>(source)), resampling, nullptr, outDepth);
    return *readAllRows(*rows);
}

RowFormat formatOf(std::uint32_t width, std::uint32_t height, ColorModel model, bool alpha,
                   SampleDepth depth) {
    return {width, height, model, alpha, depth};
}

/// Reductions, enlargements, both at once, fractions, offsets as from cropping, single rows and columns.
const std::vector<std::pair<AxisMap, AxisMap>> variousMaps = {
    {{0.5, 0, 30}, {0.5, 0, 20}},       {{0.2004, 0, 12}, {0.2004, 1.7, 8}},  {{2.5, 0, 150}, {2.5, 0, 100}},
    {{3.0, 0, 180}, {0.25, 0, 10}},     {{0.25, 0, 15}, {3.0, 0, 120}},       {{1.0, 0, 60}, {1.0, 0, 40}},
    {{0.9999, 0, 59}, {0.9999, 1, 38}}, {{1 / 60.0, 0, 1}, {1 / 40.0, 0, 1}}, {{0.013, 0, 1}, {0.03, 0, 1}},
    {{0.7, -0.4, 43}, {0.7, 0.4, 27}},
};

} // namespace

TEST(Resampler, agreesWithTheWholeImageResamplerForEveryLayoutFilterAndMap) {
    for (const ColorModel model : {ColorModel::gray, ColorModel::rgb})
        for (const bool alpha : {false, true})
            for (const SampleDepth depth : {SampleDepth::bits8, SampleDepth::bits16})
                for (const ResampleFilter filter : {ResampleFilter::lanczos, ResampleFilter::triangle})
                    for (const Light light : {Light::linear, Light::stored}) {
                        const PixelBuffer source = makePhoto(formatOf(60, 40, model, alpha, depth));
                        for (const auto& [x, y] : variousMaps) {
                            const Resampling resampling{x, y, filter, light};
                            const auto expected =
                                resampledWhole(source, resampling, ToneCurve::sRGB(), depth);
                            // 16-bit samples are converted by an interpolated table, within a few codes.
                            ASSERT_TRUE(samePicture(resampled(source, resampling, depth), expected,
                                                    depth == SampleDepth::bits8 ? 1 : 12))
                                << x.scale << " by " << y.scale << ", " << source.format.channels()
                                << " channels";
                        }
                    }
}

TEST(Resampler, aFlatPictureIsNotChanged) {
    const PixelBuffer source =
        makePicture(formatOf(50, 50, ColorModel::rgb, false, SampleDepth::bits8),
                    [](auto, auto, std::size_t c) { return 3 + 100 * static_cast<unsigned>(c); });
    for (const Light light : {Light::linear, Light::stored}) {
        const Resampling resampling{{0.31, 0, 15}, {2.2, 0, 110}, ResampleFilter::lanczos, light};
        const PixelBuffer expected =
            makePicture(formatOf(15, 110, ColorModel::rgb, false, SampleDepth::bits8),
                        [](auto, auto, std::size_t c) { return 3 + 100 * static_cast<unsigned>(c); });
        EXPECT_TRUE(samePicture(resampled(source, resampling, SampleDepth::bits8), expected));
    }
}

TEST(Resampler, theColourOfTransparentPixelsDoesNotBleed) {
    // The left half is clear and hides pure green; the right half is opaque red.
    const PixelBuffer source = makePicture(formatOf(64, 8, ColorModel::rgb, true, SampleDepth::bits8),
                                           [](std::uint32_t x, auto, std::size_t c) -> unsigned {
                                               if (c == 3)
                                                   return x < 32 ? 0 : 255;
                                               return (c == 0) == (x >= 32) && c < 2 ? 255 : 0;
                                           });
    const Resampling resampling{{0.3, 0, 19}, {0.5, 0, 4}, ResampleFilter::lanczos, Light::linear};
    const PixelBuffer result = resampled(source, resampling, SampleDepth::bits8);
    for (std::uint32_t x = 0; x < 19; ++x)
        if (sampleAt(result, x, 1, 3) > 0) {
            EXPECT_EQ(sampleAt(result, x, 1, 1), 0U) << "green at " << x;
            EXPECT_EQ(sampleAt(result, x, 1, 0), 255U) << "red at " << x;
        }
}

TEST(Resampler, linearLightKeepsTheBrightnessOfAFinePattern) {
    // Black and white stripes have half the light of white, which is 188 in sRGB.
    const PixelBuffer source =
        makePicture(formatOf(64, 64, ColorModel::gray, false, SampleDepth::bits8),
                    [](std::uint32_t x, auto, auto) { return x % 2 == 0 ? 0U : 255U; });
    Resampling resampling{{0.125, 0, 8}, {0.125, 0, 8}, ResampleFilter::lanczos, Light::linear};
    EXPECT_NEAR(sampleAt(resampled(source, resampling, SampleDepth::bits8), 4, 4, 0), 188, 1);
    resampling.light = Light::stored;
    EXPECT_NEAR(sampleAt(resampled(source, resampling, SampleDepth::bits8), 4, 4, 0), 128, 1);
}

TEST(Resampler, pixelsOutsideTheSourceHaveTheColourOfItsEdge) {
    const PixelBuffer source = makePicture(formatOf(2, 1, ColorModel::gray, false, SampleDepth::bits8),
                                           [](std::uint32_t x, auto, auto) { return 50 + 100 * x; });
    const Resampling resampling{{1, -4, 10}, {1, 0, 1}, ResampleFilter::triangle, Light::stored};
    EXPECT_EQ(resampled(source, resampling, SampleDepth::bits8).bytes,
              (Bytes{50, 50, 50, 50, 50, 150, 150, 150, 150, 150}));
}

TEST(Resampler, rowsAboveACropAreSkipped) {
    const PixelBuffer source = makePhoto(formatOf(20, 100, ColorModel::rgb, false, SampleDepth::bits8));
    const Resampling resampling{{1, 0, 20}, {0.5, 60, 20}, ResampleFilter::triangle, Light::stored};
    EXPECT_TRUE(samePicture(resampled(source, resampling, SampleDepth::bits8),
                            resampledWhole(source, resampling, ToneCurve::sRGB(), SampleDepth::bits8), 1));
}

} // namespace kestrine
