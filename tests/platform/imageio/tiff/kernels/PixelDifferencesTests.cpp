#include "platform/imageio/tiff/kernels/PixelDifferences.h"

#include "platform/imageio/tiff/kernels/PixelDifferences_reference.h"
#include "tests/platform/coregraphics/kernels/EveryTarget.h"

#include <random>
#include <vector>

namespace kestrine::kernels {

TEST(PixelDifferences, everyTargetGivesTheBytesOfThePlainLoop) {
    testing::onEveryTarget([] {
        std::mt19937 random(5);
        for (const std::size_t bytesPerSample : {1, 2})
            for (std::size_t samples = 1; samples <= 6; ++samples)
                for (std::size_t width = 0; width <= 70; ++width) {
                    const std::size_t count = width * samples * bytesPerSample;
                    std::vector<std::uint8_t> row(count + 1);
                    for (std::uint8_t& byte : row)
                        byte = static_cast<std::uint8_t>(random());
                    std::vector<std::uint8_t> expected = row;
                    undoPixelDifferences(row.data(), count, bytesPerSample, samples);
                    reference::undoPixelDifferences(expected.data(), count, bytesPerSample, samples);
                    ASSERT_EQ(row, expected) << width << " pixels of " << samples << " samples";
                }
    });
}

TEST(PixelDifferences, samplesAreSumsOfDifferences) {
    std::vector<std::uint8_t> bytes = {1, 10, 2, 20, 255, 246};
    undoPixelDifferences(bytes.data(), bytes.size(), 1, 2);
    EXPECT_EQ(bytes, (std::vector<std::uint8_t>{1, 10, 3, 30, 2, 20}));
}

TEST(PixelDifferences, sumsOfWordsCarry) {
    std::vector<std::uint16_t> words = {0x00FF, 0x0001, 0xFFFF};
    undoPixelDifferences(reinterpret_cast<std::uint8_t*>(words.data()), 6, 2, 1);
    EXPECT_EQ(words, (std::vector<std::uint16_t>{0x00FF, 0x0100, 0x00FF}));
}

} // namespace kestrine::kernels
