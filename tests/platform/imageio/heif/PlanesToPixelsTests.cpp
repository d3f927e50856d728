#include "platform/imageio/heif/PlanesToPixels.h"

#include "platform/host/Bytes.h"

#include <cmath>
#include <cstring>
#include <gtest/gtest.h>
#include <random>

namespace kestrine::heif {

namespace {

constexpr RowFormat rgb8{.width = 1, .height = 1};
constexpr RowFormat rgba16{.width = 1, .height = 1, .hasAlpha = true, .depth = SampleDepth::bits16};
constexpr RowFormat gray8{.width = 1, .height = 1, .model = ColorModel::gray};

/// Planes of random samples.
template <class Sample>
struct Planes {
    DecodedPlanes planes;
    std::array<std::vector<Sample>, 3> samples;

    Planes(const Size& size, bool isHalfWidth, bool isHalfHeight, unsigned bits, bool isMonochrome = false) {
        planes.isHalfWidth = isHalfWidth;
        planes.isHalfHeight = isHalfHeight;
        planes.isMonochrome = isMonochrome;
        planes.bits = bits;
        planes.points = {1, 13, 6, true};
        std::minstd_rand random(7);
        for (std::size_t i = 0; i < (isMonochrome ? 1 : 3); ++i) {
            const Size own = i == 0 ? size
                                    : Size{isHalfWidth ? (size.width + 1) / 2 : size.width,
                                           isHalfHeight ? (size.height + 1) / 2 : size.height};
            samples[i].resize(std::size_t{own.width} * own.height);
            for (Sample& sample : samples[i])
                sample = static_cast<Sample>(random() % (1u << bits));
            planes.planes[i] = {reinterpret_cast<const std::uint8_t*>(samples[i].data()),
                                static_cast<std::ptrdiff_t>(own.width * sizeof(Sample)), own};
        }
    }

    /// A sample of a plane, the nearest one where the place is outside.
    double at(std::size_t plane, std::int64_t x, std::int64_t y) const {
        const Size& size = planes.planes[plane].size;
        const auto inside = [](std::int64_t i, std::uint32_t count) {
            return std::min<std::size_t>(static_cast<std::size_t>(std::max<std::int64_t>(i, 0)), count - 1);
        };
        return samples[plane][inside(y, size.height) * size.width + inside(x, size.width)];
    }

    /// Chroma at a place of the whole picture, by interpolation between the centres of samples.
    double chroma(std::size_t plane, std::uint32_t x, std::uint32_t y) const {
        const double u = planes.isHalfWidth ? (x + 0.5) / 2 - 0.5 : x,
                     v = planes.isHalfHeight ? (y + 0.5) / 2 - 0.5 : y;
        const double left = std::floor(u), top = std::floor(v);
        const auto row = [&](double line) {
            const auto i = static_cast<std::int64_t>(left), k = static_cast<std::int64_t>(line);
            return at(plane, i, k) * (1 - (u - left)) + at(plane, i + 1, k) * (u - left);
        };
        return row(top) * (1 - (v - top)) + row(top + 1) * (v - top);
    }
};

/// A row of converted pixels.
template <class Sample>
std::vector<Sample> converted(const DecodedPlanes& planes, const RowFormat& layout, std::uint32_t y,
                              const std::optional<CodingPoints>& points = {}) {
    Result<PlanesToPixels> converter = PlanesToPixels::create(planes, points, layout);
    if (!converter) {
        ADD_FAILURE() << converter.failure().text;
        return {};
    }
    const std::uint32_t width = planes.planes[0].size.width;
    std::vector<Sample> row(width * layout.channels());
    converter->convert(y, width, reinterpret_cast<std::uint8_t*>(row.data()));
    return row;
}

/// Compares with a computation in double precision, at full range and by the matrix of BT.601.
template <class Stored, class Sample>
void expectExact(const Planes<Stored>& source, const RowFormat& layout) {
    const Size size = source.planes.planes[0].size;
    const double largest = (1u << source.planes.bits) - 1, full = std::pow(256.0, sizeof(Sample)) - 1;
    const double zero = 1u << (source.planes.bits - 1);
    for (std::uint32_t y = 0; y < size.height; ++y) {
        const std::vector<Sample> row = converted<Sample>(source.planes, layout, y);
        for (std::uint32_t x = 0; x < size.width; ++x) {
            const double luma = source.at(0, x, y), cb = source.chroma(1, x, y) - zero,
                         cr = source.chroma(2, x, y) - zero;
            const double expected[] = {luma + 1.402 * cr, luma - 0.344136286 * cb - 0.714136286 * cr,
                                       luma + 1.772 * cb};
            for (std::size_t c = 0; c < 3; ++c)
                ASSERT_NEAR(row[x * layout.channels() + c],
                            std::clamp(expected[c] / largest * full, 0.0, full), 0.51)
                    << x << " " << y;
        }
    }
}

} // namespace

TEST(PlanesToPixels, everySamplingAgreesWithDoublePrecision) {
    for (const Size size : {Size{9, 7}, Size{8, 6}, Size{1, 1}, Size{2, 1}, Size{1, 2}}) {
        for (const auto& [isHalfWidth, isHalfHeight] :
             {std::pair{false, false}, {true, false}, {true, true}}) {
            expectExact<std::uint8_t, std::uint8_t>({size, isHalfWidth, isHalfHeight, 8}, rgb8);
            expectExact<std::uint16_t, std::uint16_t>({size, isHalfWidth, isHalfHeight, 10}, rgba16);
            expectExact<std::uint16_t, std::uint16_t>({size, isHalfWidth, isHalfHeight, 12}, rgba16);
        }
    }
}

TEST(PlanesToPixels, alphaIsOpaque) {
    const Planes<std::uint16_t> source({5, 1}, true, true, 10);
    const auto row = converted<std::uint16_t>(source.planes, rgba16, 0);
    for (std::size_t x = 0; x < 5; ++x)
        EXPECT_EQ(row[4 * x + 3], 65535);
}

TEST(PlanesToPixels, fullBrightnessIsWhiteAndZeroIsBlackInBothRanges) {
    Planes<std::uint8_t> source({2, 1}, false, false, 8);
    source.samples[1] = source.samples[2] = {128, 128};
    source.samples[0] = {0, 255};
    EXPECT_EQ(converted<std::uint8_t>(source.planes, rgb8, 0),
              (std::vector<std::uint8_t>{0, 0, 0, 255, 255, 255}));
    source.planes.points.isFullRange = false;
    source.samples[0] = {16, 235};
    EXPECT_EQ(converted<std::uint8_t>(source.planes, rgb8, 0),
              (std::vector<std::uint8_t>{0, 0, 0, 255, 255, 255}));
    source.samples[0] = {0, 255}; // beyond both ends
    EXPECT_EQ(converted<std::uint8_t>(source.planes, rgb8, 0),
              (std::vector<std::uint8_t>{0, 0, 0, 255, 255, 255}));
}

TEST(PlanesToPixels, theFileTakesPrecedenceOverTheCompressedData) {
    Planes<std::uint8_t> source({1, 1}, false, false, 8);
    source.samples[0][0] = 10, source.samples[1][0] = 20, source.samples[2][0] = 30;
    const CodingPoints identity{1, 13, 0, true};
    EXPECT_EQ(converted<std::uint8_t>(source.planes, rgb8, 0, identity),
              (std::vector<std::uint8_t>{30, 10, 20}));
}

TEST(PlanesToPixels, greyIsBrightnessAlone) {
    Planes<std::uint8_t> source({3, 1}, true, true, 8, true);
    source.samples[0] = {0, 100, 255};
    EXPECT_EQ(converted<std::uint8_t>(source.planes, gray8, 0), (std::vector<std::uint8_t>{0, 100, 255}));
    EXPECT_EQ(converted<std::uint8_t>(source.planes, rgb8, 0),
              (std::vector<std::uint8_t>{0, 0, 0, 100, 100, 100, 255, 255, 255}));
}

TEST(PlanesToPixels, unsupportedMatricesFailUnlessThePictureIsGrey) {
    const Planes<std::uint8_t> colored({1, 1}, false, false, 8), gray({1, 1}, false, false, 8, true);
    const CodingPoints constantLuminance{9, 14, 10, true};
    EXPECT_FALSE(PlanesToPixels::create(colored.planes, constantLuminance, rgb8));
    EXPECT_TRUE(PlanesToPixels::create(gray.planes, constantLuminance, gray8));
}

} // namespace kestrine::heif
