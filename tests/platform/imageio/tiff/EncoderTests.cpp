#include "tests/platform/imageio/Decoded.h"
#include "tests/support/Pictures.h"

#include <algorithm>

namespace kestrine::testing {

namespace {

/// Has a size but fails the test when rows are read.
class UntouchedRows final : public RowSource {
public:
    explicit UntouchedRows(const RowFormat& format) : RowSource(format) {}
    Result<void> readRow(std::span<std::uint8_t>) override {
        ADD_FAILURE() << "a row was read";
        return Failure{Reason::refused, "untouched"};
    }
};

class BreakingRows final : public RowSource {
public:
    BreakingRows() : RowSource({4, 4}) {}
    Result<void> readRow(std::span<std::uint8_t>) override {
        if (count_++ == 1)
            return Failure{Reason::truncated, "broken on purpose"};
        return {};
    }

private:
    int count_ = 0;
};

} // namespace

TEST(TIFFEncoder, everyLayoutIsDecodedUnchanged) {
    for (const auto& [width, height] :
         {std::pair{1u, 1u}, {37u, 23u}, {1u, 64u}, {30'000u, 3u}, {500u, 400u}})
        for (const RowFormat& layout : allLayouts(width, height)) {
            const PixelBuffer picture = makePhoto(layout);
            EXPECT_TRUE(
                samePicture(decodeSound(tiff::codec, encodeSound(tiff::encode, picture)).pixels, picture));
        }
}

TEST(TIFFEncoder, theFileIsLittleEndianAndHasOnlyHeaderAndPixels) {
    const Bytes file = encodeSound(tiff::encode, makePhoto({100, 100}));
    EXPECT_EQ(Bytes(file.begin(), file.begin() + 8), (Bytes{'I', 'I', 42, 0, 8, 0, 0, 0}));
    EXPECT_LT(file.size(), 100u * 100 * 3 + 400);
}

TEST(TIFFEncoder, theResolutionIsRecorded) {
    for (const double perInch : {1.0, 72.0, 72.0 * 1201 / 1200, 299.5, 100'000.0, 123.456789}) {
        EncodingOptions options;
        options.resolution = {perInch, 96};
        const Decoded decoded =
            decodeSound(tiff::codec, encodeSound(tiff::encode, makePhoto({2, 2}), options));
        EXPECT_NEAR(decoded.frame().resolution.horizontal / perInch, 1, 1e-7);
        EXPECT_EQ(decoded.frame().resolution.vertical, 96);
    }
}

TEST(TIFFEncoder, simpleRatiosAreRecordedExactly) {
    EncodingOptions options;
    options.resolution = {72.0 * 1201 / 1200, 300};
    const Bytes file = encodeSound(tiff::encode, makePhoto({2, 2}), options);
    const Bytes ratios = {0x13, 0x0E, 0, 0, 50, 0, 0, 0, 0x2C, 0x01, 0, 0, 1, 0, 0, 0}; // 3603/50, 300/1
    EXPECT_NE(std::search(file.begin(), file.end(), ratios.begin(), ratios.end()), file.end());
}

TEST(TIFFEncoder, theProfileIsEmbeddedOrAbsent) {
    const ColorProfile profile = ColorProfile::adobeRGB();
    EncodingOptions options;
    options.profile = &profile;
    EXPECT_EQ(decodeSound(tiff::codec, encodeSound(tiff::encode, makePhoto({2, 2}), options)).frame().profile,
              profile);
    EXPECT_FALSE(
        decodeSound(tiff::codec, encodeSound(tiff::encode, makePhoto({2, 2}))).frame().profile.has_value());
}

TEST(TIFFEncoder, aFileOfMoreThan4GiBIsRefusedBeforeReadingRows) {
    UntouchedRows rows({40'000, 26'000, ColorModel::rgb, true, SampleDepth::bits16});
    const Result<Bytes> file = encoded(tiff::encode, rows, {});
    ASSERT_FALSE(file.ok());
    EXPECT_EQ(file.failure().reason, Reason::tooLarge);
}

TEST(TIFFEncoder, aPictureWithoutPixelsIsRefused) {
    UntouchedRows rows({0, 5});
    const Result<Bytes> file = encoded(tiff::encode, rows, {});
    ASSERT_FALSE(file.ok());
    EXPECT_EQ(file.failure().reason, Reason::empty);
}

TEST(TIFFEncoder, aFailureOfTheRowsIsReturned) {
    BreakingRows rows;
    const Result<Bytes> file = encoded(tiff::encode, rows, {});
    ASSERT_FALSE(file.ok());
    EXPECT_EQ(file.failure().text, "broken on purpose");
}

TEST(TIFFEncoder, aFileCutOffAnywhereIsRefused) {
    const Bytes file = encodeSound(tiff::encode, makePhoto({9, 7}));
    for (std::size_t length = 0; length < file.size(); ++length)
        EXPECT_TRUE(failsToDecode(tiff::codec,
                                  Bytes(file.begin(), file.begin() + static_cast<std::ptrdiff_t>(length))))
            << length;
}

} // namespace kestrine::testing
