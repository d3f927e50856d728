#include "platform/imageio/png/thorough/ThoroughPiece.h"

#include "platform/coregraphics/RowsAhead.h"
#include "tests/platform/imageio/Decoded.h"
#include "tests/support/Pictures.h"

namespace kestrine::testing {

TEST(ThoroughPiece, everyLayoutIsDecodedUnchanged) {
    for (const RowFormat& layout : allLayouts(61, 47)) {
        const PixelBuffer picture = makePhoto(layout);
        const Bytes file = encodeSound(png::encode, picture, {.effort = Effort::max});
        EXPECT_TRUE(samePicture(decodeSound(png::codec, file).pixels, picture));
    }
}

TEST(ThoroughPiece, moreEffortGivesASmallerFile) {
    std::size_t before = std::numeric_limits<std::size_t>::max();
    for (const Effort effort : {Effort::fast, Effort::normal, Effort::max}) {
        const std::size_t size =
            encodeSound(png::encode, makePhoto({.width = 300, .height = 200}), {.effort = effort}).size();
        EXPECT_LT(size, before);
        before = size;
    }
}

TEST(ThoroughPiece, severalPiecesAreDecodedUnchangedWithAnyNumberOfThreads) {
    const PixelBuffer picture = makePhoto({.width = 1000, .height = 1500});
    const EncodingOptions options{.effort = Effort::max};
    const Bytes file = encodeSound(png::encode, picture, options);
    EXPECT_TRUE(samePicture(decodeSound(png::codec, file).pixels, picture));
    const OneThreadScope oneThread;
    EXPECT_EQ(encodeSound(png::encode, picture, options), file);
}

} // namespace kestrine::testing
