#include "tests/platform/imageio/Decoded.h"
#include "tests/support/Pictures.h"

namespace kestrine::testing {

namespace {

/// Fails at the second row.
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

TEST(PNGEncoder, everyLayoutIsDecodedUnchanged) {
    for (const auto& [width, height] : {std::pair{1u, 1u}, {37u, 23u}, {1u, 64u}, {300u, 1u}})
        for (const RowFormat& layout : allLayouts(width, height)) {
            const PixelBuffer picture = makePhoto(layout);
            EXPECT_TRUE(
                samePicture(decodeSound(png::codec, encodeSound(png::encode, picture)).pixels, picture));
        }
}

TEST(PNGEncoder, theResolutionIsRecorded) {
    for (const double perInch : {1.0, 72.0, 299.5, 300.0, 100'000.0}) {
        EncodingOptions options;
        options.resolution = {perInch, 96};
        const Decoded decoded = decodeSound(png::codec, encodeSound(png::encode, makePhoto({2, 2}), options));
        EXPECT_NEAR(decoded.frame().resolution.horizontal, perInch, 0.0127);
        EXPECT_EQ(decoded.frame().resolution.vertical, 96);
    }
}

TEST(PNGEncoder, anUntaggedPictureStaysUntagged) {
    const std::string file = [] {
        const Bytes bytes = encodeSound(png::encode, makePhoto({2, 2}));
        return std::string(bytes.begin(), bytes.end());
    }();
    for (const char* chunk : {"iCCP", "sRGB", "gAMA", "cHRM"})
        EXPECT_EQ(file.find(chunk), std::string::npos) << chunk;
}

TEST(PNGEncoder, theProfileIsEmbedded) {
    for (const ColorModel model : {ColorModel::gray, ColorModel::rgb}) {
        const auto profile = ColorProfile::fromGamma(1.8, sRGBChromaticities, model);
        ASSERT_TRUE(profile.has_value());
        EncodingOptions options;
        options.profile = &*profile;
        const Bytes file = encodeSound(png::encode, makePhoto({2, 2, model}), options);
        EXPECT_EQ(decodeSound(png::codec, file).frame().profile, profile);
    }
}

TEST(PNGEncoder, aProfileWhoseLengthIsNoMultipleOfFourIsPadded) {
    const ByteView plain = ColorProfile::sRGB().bytes(); // version 4, which requires a multiple of four bytes
    Bytes icc(plain.begin(), plain.end());
    icc.resize(icc.size() + 2);
    icc[3] = static_cast<std::uint8_t>(icc.size());
    icc[2] = static_cast<std::uint8_t>(icc.size() >> 8);
    const auto profile = ColorProfile::fromICC(icc, ColorModel::rgb);
    ASSERT_TRUE(profile.has_value());
    ASSERT_EQ(profile->bytes().size() % 4, 2U);
    EncodingOptions options;
    options.profile = &*profile;
    const auto embedded =
        decodeSound(png::codec, encodeSound(png::encode, makePhoto({2, 2}), options)).frame().profile;
    ASSERT_TRUE(embedded.has_value());
    EXPECT_EQ(embedded->bytes().size(), icc.size() + 2);
}

TEST(PNGEncoder, aFailureOfTheRowsIsReturned) {
    BreakingRows rows;
    const Result<Bytes> file = encoded(png::encode, rows, {});
    ASSERT_FALSE(file.ok());
    EXPECT_EQ(file.failure().text, "broken on purpose");
}

TEST(PNGEncoder, aPictureWithoutPixelsIsRefused) {
    const Result<Bytes> file =
        encoded(png::encode, *rowsOfPixels(std::make_shared<PixelBuffer>(RowFormat{0, 5})), {});
    ASSERT_FALSE(file.ok());
    EXPECT_EQ(file.failure().reason, Reason::empty);
}

TEST(PNGEncoder, aPhotoIsCompressed) {
    const RowFormat format{640, 480};
    const Bytes photo = encodeSound(png::encode, makePhoto(format));
    EXPECT_LT(photo.size(), format.bytesPerRow() * format.height / 2);
}

} // namespace kestrine::testing
