#include "kestrinectl/compare/ResultLabels.h"

#include <gtest/gtest.h>

namespace kestrine {
namespace {

TEST(ResultLabels, theyNameTheFormatAndItsQuality) {
    EXPECT_EQ(labelOf({.quality = 0.8F}, outputFormat(FileType::jpeg)), "JPEG, quality 80");
    EXPECT_EQ(labelOf({.quality = 0.8F}, outputFormat(FileType::png)), "PNG");
}

TEST(ResultLabels, theyNameASetFirst) {
    const ConversionRecipe recipe{.quality = 0.7F, .place = {.setName = NSString(u"Web & more")}};
    EXPECT_EQ(labelOf(recipe, outputFormat(FileType::webp)), "Web & more: WebP, quality 70");
}

TEST(ResultLabels, whatDecidesTheQualityIsNamed) {
    EXPECT_EQ(labelOf({.quality = 1, .isLossless = true}, outputFormat(FileType::avif)), "AVIF, lossless");
    EXPECT_EQ(labelOf({.quality = 1, .maxBytes = 200'000}, outputFormat(FileType::jpeg)),
              "JPEG, at most 200 kB");
}

TEST(ResultLabels, sizesAreNamedOnlyWhereTheyDiffer) {
    std::vector<ComparedImage> images = {{.label = "Original", .width = 30, .height = 20},
                                         {.label = "PNG", .width = 30, .height = 20}};
    addSizesToLabels(images);
    EXPECT_EQ(images[1].label, "PNG");
    images[1].height = 21;
    addSizesToLabels(images);
    EXPECT_EQ(images[0].label, "Original, 30 x 20");
    EXPECT_EQ(images[1].label, "PNG, 30 x 21");
}

} // namespace
} // namespace kestrine
