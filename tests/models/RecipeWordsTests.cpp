#include "models/RecipeWords.h"

#include <gtest/gtest.h>

namespace kestrine {
namespace {

template <class T>
bool refuses(const Result<T>& result) {
    return !result && result.failure().text.starts_with("must be ");
}

TEST(RecipeWords, lengthsAreWholeNumbersWithCommas) {
    EXPECT_EQ(*lengthsIn("480"), (std::vector<std::uint32_t>{480}));
    EXPECT_EQ(*lengthsIn("480,960,1000000"), (std::vector<std::uint32_t>{480, 960, 1000000}));
    for (const char* word : {"", "0", "1000001", "1.5", "-3", "480,", ",480", "480 960", "0x10", "nan"})
        EXPECT_TRUE(refuses(lengthsIn(word))) << word;
}

TEST(RecipeWords, percentagesMayHaveFractions) {
    EXPECT_EQ(*percentagesIn("50,12.5"), (std::vector<double>{50, 12.5}));
    for (const char* word : {"0", "-1", "nan", "inf", "100001", "50%"})
        EXPECT_TRUE(refuses(percentagesIn(word))) << word;
}

TEST(RecipeWords, aBoxHasTwoLengths) {
    EXPECT_EQ(*boxIn("1200x800"), (PixelBox{1200, 800}));
    for (const char* word : {"1200", "1200x", "x800", "1200x0", "1200X800", "1200x800x3"})
        EXPECT_TRUE(refuses(boxIn(word))) << word;
}

TEST(RecipeWords, gravityIsAPointOfTheCompass) {
    EXPECT_EQ(*gravityNamed("northeast"), (Gravity{1, 0}));
    EXPECT_EQ(*gravityNamed("center"), Gravity{});
    EXPECT_EQ(gravityNamed("up").failure().text, "must be center, north, northeast, east, southeast, south, "
                                                 "southwest, west or northwest");
}

TEST(RecipeWords, aColourIsANameOrHexadecimal) {
    EXPECT_EQ(*colorIn("white"), white);
    EXPECT_EQ(*colorIn("#ff8001"), (RGBColor{255, 128, 1}));
    EXPECT_EQ(*colorIn("#FA0"), (RGBColor{255, 170, 0}));
    for (const char* word : {"", "#", "ff8001", "#ff80", "#ff80gg", "#-f8001", "Dark"})
        EXPECT_TRUE(refuses(colorIn(word))) << word;
}

TEST(RecipeWords, aNumberOfBytesMayHaveADecimalUnit) {
    EXPECT_EQ(*bytesIn("200000"), 200000U);
    EXPECT_EQ(*bytesIn("200k"), 200000U);
    EXPECT_EQ(*bytesIn("1.5M"), 1500000U);
    for (const char* word : {"", "k", "0", "-1", "200kB", "200 k", "1e99", "nan"})
        EXPECT_TRUE(refuses(bytesIn(word))) << word;
}

TEST(RecipeWords, metadataTimesAndProfilesAreWords) {
    EXPECT_EQ(*metadataNamed("none"), std::nullopt);
    EXPECT_EQ(*metadataNamed("all"), ExifSelection::all);
    EXPECT_EQ(*timesNamed("taken"), TimesRule::taken);
    EXPECT_TRUE(*profileNamed("srgb"));
    EXPECT_FALSE(*profileNamed("keep"));
    EXPECT_TRUE(refuses(metadataNamed("")) && refuses(timesNamed("")) && refuses(profileNamed("")));
}

} // namespace
} // namespace kestrine
