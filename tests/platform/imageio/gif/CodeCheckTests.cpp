#include "platform/imageio/gif/CodeCheck.h"

#include "platform/imageio/LocalSource.h"
#include "tests/platform/imageio/gif/GIFFile.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace kestrine::gif {

namespace {

/// The number of codes accepted before the first refused one. The minimum code size is 2 bits: 4 is the clear
/// code, 5 the end code.
std::size_t acceptedCodes(const std::vector<int>& codes, std::uint64_t pixels = 100) {
    CodeCheck check(2, pixels);
    const auto refused = std::ranges::find_if(codes, [&check](int code) { return !check.accepts(code); });
    return static_cast<std::size_t>(refused - codes.begin());
}

std::optional<Failure> damageOf(const Bytes& file) {
    const auto source = *LocalSource::open(readerOfBytes(file));
    EXPECT_TRUE(readAllRows(**source->rows(0, 0)).ok());
    return source->damage();
}

/// A picture of 4 x 1 pixels whose data is `codes`, in blocks.
Bytes fileOfCodes(const Bytes& codes) {
    Bytes file = testing::GIFFile{.screenHeight = 1, .height = 1}.make();
    const std::size_t data = 13 + 4 * 3 + 10 + 1;
    file.resize(data);
    file.push_back(static_cast<std::uint8_t>(codes.size()));
    file.insert(file.end(), codes.begin(), codes.end());
    file.insert(file.end(), {0, 0x3B});
    return file;
}

} // namespace

TEST(GIFCodeCheck, colorsAndKnownStringsAreAccepted) {
    EXPECT_EQ(acceptedCodes({4, 1, 2, 6, 8}), 5u);
    EXPECT_EQ(acceptedCodes({4, 1, 6, 7}), 4u); // each is the string that it defines
}

TEST(GIFCodeCheck, aCodeBeyondTheNextNewOneIsUndefined) {
    EXPECT_EQ(acceptedCodes({4, 1, 7}), 2u);
    EXPECT_EQ(acceptedCodes({4, 6}), 1u);
}

TEST(GIFCodeCheck, theClearCodeRemovesAllStrings) {
    EXPECT_EQ(acceptedCodes({4, 1, 2, 4, 3, 6}), 6u);
    EXPECT_EQ(acceptedCodes({4, 1, 2, 3, 4, 6}), 5u);
}

TEST(GIFCodeCheck, theEndCodeIsAcceptedOnlyAfterAllPixels) {
    for (const std::uint64_t pixels : {6u, 7u}) {
        CodeCheck check(2, pixels);
        for (const int code : {4, 1, 6, 7}) // 1, 2 and 3 pixels
            EXPECT_FALSE(check.isComplete() || !check.accepts(code));
        EXPECT_EQ(check.isComplete(), pixels == 6);
        EXPECT_FALSE(check.accepts(5));
    }
}

TEST(GIFDamage, validFilesHaveNone) {
    for (const bool isInterlaced : {false, true})
        EXPECT_FALSE(damageOf(testing::GIFFile{
            .screenWidth = 90, .screenHeight = 70, .width = 90, .height = 70, .interlaced = isInterlaced}
                                  .make()));
}

TEST(GIFDamage, undefinedCodesAreReported) {
    EXPECT_FALSE(damageOf(fileOfCodes({0b10'001'100, 0b0101'001'1})));       // 4, 1, 6, 1, 5
    const auto damage = damageOf(fileOfCodes({0b11'001'100, 0b0101'001'1})); // 4, 1, 7, 1, 5
    ASSERT_TRUE(damage);
    EXPECT_EQ(damage->reason, Reason::malformed);
}

} // namespace kestrine::gif
