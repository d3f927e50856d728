#include "platform/imageio/OutputFormats.h"

#include "platform/coregraphics/PixelBuffer.h"
#include "platform/imageio/Codecs.h"
#include "tests/platform/imageio/Decoded.h"
#include "tests/support/Pictures.h"

#include <cmath>
#include <gtest/gtest.h>

namespace kestrine {

TEST(OutputFormats, haveTheNumbersThatPresetsStore) {
    const std::string_view names[] = {"jpeg", "png", "tiff", "gif"};
    const std::string_view extensions[] = {"jpg", "png", "tiff", "gif"};
    ASSERT_EQ(presetFormats().size(), 4u);
    for (std::int32_t number = 0; number < 4; ++number) {
        EXPECT_EQ(outputFormatNumbered(number)->name, names[number]);
        EXPECT_EQ(outputFormatNumbered(number)->extension, extensions[number]);
        EXPECT_EQ(&outputFormat(static_cast<FileType>(number)), outputFormatNumbered(number));
    }
    EXPECT_EQ(outputFormatNumbered(-1), nullptr);
    EXPECT_EQ(outputFormatNumbered(4), nullptr);
}

TEST(OutputFormats, areFoundByTheirNamesAmongThoseThatAreAllowed) {
    EXPECT_EQ(formatNamed("webp", outputFormats())->type, FileType::webp);
    EXPECT_EQ(formatNamed("webp", presetFormats()), nullptr);
    EXPECT_EQ(formatNamed("", outputFormats()), nullptr);
}

TEST(OutputFormats, areFoundByTheirExtensionsAndInUpperCaseToo) {
    for (const char* word : {"jpg", "JPG", "JPEG", "Jpe"})
        EXPECT_EQ(formatNamed(word, presetFormats()), &outputFormat(FileType::jpeg)) << word;
    EXPECT_EQ(formatNamed("TIF", presetFormats()), &outputFormat(FileType::tiff));
    EXPECT_EQ(formatNamed("WebP", outputFormats()), &outputFormat(FileType::webp));
    EXPECT_EQ(formatNamed("jp", outputFormats()), nullptr);
}

TEST(OutputFormats, knowTheExtensionsOfTheirFiles) {
    EXPECT_TRUE(hasExtension(outputFormat(FileType::tiff), "Tif"));
    EXPECT_FALSE(hasExtension(outputFormat(FileType::tiff), "jpg"));
    EXPECT_FALSE(hasExtension(outputFormat(FileType::png), "")); // unused places in the table are empty
}

TEST(OutputFormats, eachEncoderWritesItsFormat) {
    for (const OutputFormat& format : outputFormats()) {
        const auto rows = rowsOfPixels(std::make_shared<PixelBuffer>(RowFormat{3, 2, ColorModel::rgb}));
        const Result<Bytes> file = encoded(format.encode, *rows, {});
        ASSERT_TRUE(file.ok()) << format.name;
        const ImageCodec* codec = codecFor(*readerOfBytes(*file));
        ASSERT_NE(codec, nullptr) << format.name;
        EXPECT_EQ(codec->name, format.title);
    }
}

TEST(OutputFormats, eachEncoderWritesTheLongestSideOfItsFormat) {
    for (const OutputFormat& format : outputFormats())
        for (const auto& [width, height] : {std::pair{format.longestSide, 1u}, {1u, format.longestSide}}) {
            EXPECT_TRUE(checkSize(width, height, format).ok()) << format.name;
            const auto rows = rowsOfPixels(std::make_shared<PixelBuffer>(RowFormat{width, height}));
            EXPECT_TRUE(encoded(format.encode, *rows, {}).ok()) << format.name;
        }
}

TEST(OutputFormats, sizesThatTheyCannotHoldAreRefused) {
    for (const OutputFormat& format : outputFormats()) {
        EXPECT_EQ(checkSize(format.longestSide + 1, 1, format).failure().reason, Reason::tooLarge);
        EXPECT_EQ(checkSize(1, format.longestSide + 1, format).failure().reason, Reason::tooLarge);
        EXPECT_EQ(checkSize(0, 1, format).failure().reason, Reason::empty);
    }
    const OutputFormat& png = outputFormat(FileType::png);
    EXPECT_TRUE(checkSize(maximumPixels() / 2048, 2048, png).ok());
    EXPECT_EQ(checkSize(maximumPixels() / 2048, 2049, png).failure().reason, Reason::tooLarge);
    EXPECT_EQ(checkSize(16384, 1, outputFormat(FileType::webp)).failure().text,
              "WebP pictures have at most 16383 pixels on a side");
}

TEST(OutputFormats, everyQualityIsClampedAndNaNCountsAsZero) {
    const PixelBuffer photo = testing::makePhoto({32, 32});
    for (const OutputFormat& format : outputFormats()) {
        if (!format.hasQuality)
            continue;
        const auto withQuality = [&](double quality) {
            return testing::encodeSound(format.encode, photo, {.quality = quality});
        };
        const Bytes lowest = withQuality(0), highest = withQuality(1);
        EXPECT_EQ(withQuality(-3), lowest) << format.name;
        EXPECT_EQ(withQuality(std::nan("")), lowest) << format.name;
        EXPECT_EQ(withQuality(700), highest) << format.name;
        EXPECT_LT(lowest.size(), highest.size()) << format.name;
    }
}

} // namespace kestrine
