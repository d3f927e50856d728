#include "platform/imageio/png/fast/ImageDataWriter.h"

#include "platform/coregraphics/RowsAhead.h"
#include "tests/platform/imageio/Decoded.h"
#include "tests/platform/imageio/png/PNGRecipe.h"
#include "tests/support/Pictures.h"

#include <zlib.h>

namespace kestrine::testing {

namespace {

/// Contents that deflate stores in different ways: empty, uncompressed, with fixed codes, in one block, in
/// many blocks.
std::vector<Bytes> contents() {
    std::mt19937 random(11);
    std::vector<Bytes> all = {{}, {1}, Bytes(3, 7), Bytes(100'000, 0)};
    for (const unsigned spread : {2u, 10u, 100u, 256u})
        for (const std::size_t count : {20, 333, 5000, 70'001, 900'000}) {
            Bytes bytes(count);
            for (std::uint8_t& byte : bytes)
                byte = static_cast<std::uint8_t>(random() % spread);
            all.push_back(std::move(bytes));
        }
    return all;
}

Bytes inflated(const Bytes& stream, std::size_t expectedLength) {
    Bytes bytes(expectedLength + 1);
    uLongf length = bytes.size();
    EXPECT_EQ(uncompress(bytes.data(), &length, stream.data(), stream.size()), Z_OK);
    bytes.resize(length);
    return bytes;
}

} // namespace

TEST(DeflatedPiece, canBeJoinedToOneStream) {
    Bytes stream = {0x78, 0x9C}, expected;
    std::uint32_t adler = 1;
    const auto add = [&](const Bytes& bytes, bool isLast) {
        const png::DeflatedPiece piece = png::deflatePiece(bytes, isLast, 4);
        stream.insert(stream.end(), piece.deflated.begin(), piece.deflated.end());
        expected.insert(expected.end(), bytes.begin(), bytes.end());
        adler = png::joinedAdler(adler, piece.adler, piece.length);
    };
    for (const Bytes& bytes : contents())
        add(bytes, false);
    add(contents().back(), true);
    for (const int shift : {24, 16, 8, 0})
        stream.push_back(static_cast<std::uint8_t>(adler >> shift));
    EXPECT_EQ(inflated(stream, expected.size()), expected);
}

TEST(DeflatedPiece, everyPieceCanBeFollowedByAnother) {
    const Bytes second = {5, 6, 7};
    for (const Bytes& first : contents()) {
        const png::DeflatedPiece pieces[] = {png::deflatePiece(first, false, 4),
                                             png::deflatePiece(second, true, 4)};
        Bytes stream = {0x78, 0x9C};
        for (const png::DeflatedPiece& piece : pieces)
            stream.insert(stream.end(), piece.deflated.begin(), piece.deflated.end());
        const std::uint32_t adler = png::joinedAdler(pieces[0].adler, pieces[1].adler, second.size());
        for (const int shift : {24, 16, 8, 0})
            stream.push_back(static_cast<std::uint8_t>(adler >> shift));
        Bytes expected = first;
        expected.insert(expected.end(), second.begin(), second.end());
        EXPECT_EQ(inflated(stream, expected.size()), expected) << first.size() << " bytes";
    }
}

TEST(ImageDataWriter, aPictureOfSeveralPiecesIsDecodedUnchanged) {
    for (RowFormat layout : allLayouts(1531, 1)) {
        layout.height = static_cast<std::uint32_t>(2'500'000 / layout.bytesPerRow());
        const PixelBuffer picture = makePhoto(layout);
        EXPECT_TRUE(samePicture(decodeSound(png::codec, encodeSound(png::encode, picture)).pixels, picture));
    }
}

TEST(ImageDataWriter, theBytesDoNotDependOnThreads) {
    const PixelBuffer picture = makePhoto({1100, 1000});
    const Bytes withThreads = encodeSound(png::encode, picture);
    const OneThreadScope alone;
    EXPECT_EQ(encodeSound(png::encode, picture), withThreads);
}

TEST(ImageDataWriter, aRowLongerThanAPieceIsEncoded) {
    const PixelBuffer picture = makePhoto({300'000, 2, ColorModel::rgb, true, SampleDepth::bits16});
    EXPECT_TRUE(samePicture(decodeSound(png::codec, encodeSound(png::encode, picture)).pixels, picture));
}

} // namespace kestrine::testing
