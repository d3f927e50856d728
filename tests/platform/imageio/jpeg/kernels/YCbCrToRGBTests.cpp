#include "platform/imageio/jpeg/kernels/YCbCrToRGB.h"

#include "platform/imageio/jpeg/kernels/YCbCrToRGB_reference.h"
#include "tests/platform/coregraphics/kernels/EveryTarget.h"

#include <array>
#include <random>
#include <vector>

namespace kestrine::kernels {

using Row = std::vector<std::uint8_t>;

TEST(YCbCrToRGB, everyTargetConvertsEveryColourLikeThePlainLoops) {
    Row cb(65536), cr(65536);
    for (std::size_t i = 0; i < cb.size(); ++i) {
        cb[i] = static_cast<std::uint8_t>(i % 256);
        cr[i] = static_cast<std::uint8_t>(i / 256);
    }
    testing::onEveryTarget([&] {
        for (const int luma : {0, 1, 77, 128, 254, 255}) {
            const Row y(cb.size(), static_cast<std::uint8_t>(luma));
            Row rgb(cb.size() * 3), expected = rgb;
            convertYCbCrToRGB(y.data(), cb.data(), cr.data(), y.size(), rgb.data());
            reference::convertYCbCrToRGB(y.data(), cb.data(), cr.data(), y.size(), expected.data());
            ASSERT_EQ(rgb, expected) << "luma " << luma;
        }
    });
}

TEST(YCbCrToRGB, everyTargetConvertsRowsOfEveryLengthAndWritesNothingAfterThem) {
    std::mt19937 random(1);
    std::array<Row, 3> planes;
    for (Row& plane : planes)
        for (int i = 0; i < 300; ++i)
            plane.push_back(static_cast<std::uint8_t>(random()));
    testing::onEveryTarget([&] {
        for (std::size_t width = 0; width <= 300; ++width) {
            Row rgb(width * 3 + 4, 77), expected = rgb;
            convertYCbCrToRGB(planes[0].data(), planes[1].data(), planes[2].data(), width, rgb.data());
            reference::convertYCbCrToRGB(planes[0].data(), planes[1].data(), planes[2].data(), width,
                                         expected.data());
            ASSERT_EQ(rgb, expected) << width << " pixels";
        }
    });
}

TEST(YCbCrToRGB, greysAndPureColoursAreConvertedCorrectly) {
    const Row y = {0, 128, 255, 76, 150, 29}, cb = {128, 128, 128, 85, 44, 255},
              cr = {128, 128, 128, 255, 21, 107};
    Row rgb(18);
    convertYCbCrToRGB(y.data(), cb.data(), cr.data(), y.size(), rgb.data());
    EXPECT_EQ(rgb, (Row{0, 0, 0, 128, 128, 128, 255, 255, 255, 254, 0, 0, 0, 255, 1, 0, 0, 254}));
}

} // namespace kestrine::kernels
