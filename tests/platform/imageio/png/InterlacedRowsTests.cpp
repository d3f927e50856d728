#include "platform/imageio/png/InterlacedRows.h"
#include "tests/platform/imageio/Decoded.h"
#include "tests/platform/imageio/png/PNGFile.h"
#include "tests/support/Pictures.h"

namespace kestrine::testing {

namespace {

PNGFile fileOf(std::uint32_t width, std::uint32_t height) {
    PNGFile file{.width = width, .height = height, .colorType = PNG_COLOR_TYPE_RGB_ALPHA};
    file.sample = [](auto x, auto y, int c) {
        return (37 * x + 91 * y + 53U * static_cast<unsigned>(c)) % 256;
    };
    return file;
}

Result<PixelBuffer> readInterlaced(const Bytes& file, std::uint64_t maxHeldBytes) {
    auto reader = std::make_unique<png::LibraryReader>(readerOfBytes(file));
    TRY(reader->readHeader());
    png::InterlacedRows rows(std::move(reader), readerOfBytes(file), maxHeldBytes);
    return readAllRows(rows);
}

constexpr std::uint64_t small = std::uint64_t{1} << 30, large = 0;

} // namespace

TEST(PNGInterlacedRows, smallAndLargePicturesOfAllSizesAreThoseThatAreNotInterlaced) {
    for (std::uint32_t width = 1; width <= 10; ++width)
        for (std::uint32_t height = 1; height <= 10; ++height) {
            PNGFile recipe = fileOf(width, height);
            const Decoded plain = decodeSound(png::codec, recipe.make());
            recipe.interlaced = true;
            for (const std::uint64_t maxHeldBytes : {small, large}) {
                const Result<PixelBuffer> pixels = readInterlaced(recipe.make(), maxHeldBytes);
                ASSERT_TRUE(pixels.ok()) << width << " x " << height;
                EXPECT_TRUE(samePicture(*pixels, plain.pixels)) << width << " x " << height;
            }
        }
}

TEST(PNGInterlacedRows, damageAnywhereIsFound) {
    PNGFile recipe = fileOf(9, 7);
    recipe.interlaced = true;
    const Bytes sound = recipe.make();
    for (std::size_t at = 41; at < sound.size(); ++at) {
        Bytes damaged = sound, cut = sound;
        damaged[at] ^= 0x10;
        cut.resize(at);
        for (const std::uint64_t maxHeldBytes : {small, large}) {
            EXPECT_FALSE(readInterlaced(cut, maxHeldBytes).ok()) << at;
            if (at < sound.size() - 12) {
                EXPECT_FALSE(readInterlaced(damaged, maxHeldBytes).ok()) << at;
            }
        }
    }
}

} // namespace kestrine::testing
