#include "_MyClasses/Class/ExifTag/NumberText.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace kestrine {
namespace {

TEST(NumberText, theFirstFloatingConversionShowsTheNumber) {
    struct Case {
        const char16_t* format;
        const char16_t* text;
    };
    const Case cases[] = {
        {u"%f", u"2.750000"},      {u"f/%.1f", u"f/2.8"},      {u"%+08.2f|", u"+0002.75|"},
        {u"%-7.2f|", u"2.75   |"}, {u"%e", u"2.750000e+00"},   {u"%G", u"2.75"},
        {u"%Lf", u"2.750000"},     {u"100%% %.0f", u"100% 3"}, {u"\u3042%.2f\u3042", u"\u30422.75\u3042"}};
    for (const auto& [format, text] : cases)
        EXPECT_EQ(formattedNumber(format, 2.75), NSString(text)) << NSString(format).utf8();
}

TEST(NumberText, otherConversionsReadNoArgument) {
    EXPECT_EQ(formattedNumber(u"%d %s %.1f %f", 2.75), NSString(u"0 (null) 2.8 0.000000"));
    EXPECT_EQ(formattedNumber(u"%n%*d", 2.75), NSString(u"0"));
    EXPECT_EQ(formattedNumber(u"plain", 2.75), NSString(u"plain"));
    EXPECT_EQ(formattedNumber(u"50%", 2.75), NSString(u"50"));
}

TEST(NumberText, integersHaveTheirOwnConversions) {
    EXPECT_EQ(formattedNumber(u"%dmm", 50), NSString(u"50mm"));
    EXPECT_EQ(formattedNumber(u"%.1f %03i", -5), NSString(u"0.0 -05"));
    EXPECT_EQ(formattedNumber(u"%lld", std::numeric_limits<std::int32_t>::min()), NSString(u"-2147483648"));
}

TEST(NumberText, infinitiesAndNaNAreWordsAndNaNHasNoSign) {
    constexpr double infinity = std::numeric_limits<double>::infinity();
    EXPECT_EQ(formattedNumber(u"%.1f", -infinity), NSString(u"-inf"));
    EXPECT_EQ(formattedNumber(u"%.1f", std::copysign(std::nan(""), -1.0)), NSString(u"nan"));
}

TEST(NumberText, theLocaleOfTheThreadStays) {
    ::uselocale(LC_GLOBAL_LOCALE);
    EXPECT_EQ(formattedNumber(u"%.1f", 2.5), NSString(u"2.5"));
    EXPECT_EQ(::uselocale(nullptr), LC_GLOBAL_LOCALE);
}

TEST(NumberText, widthAndPrecisionAreLimited) {
    EXPECT_EQ(formattedNumber(u"%99999999999f", 1.0).length(), 4096u);
    EXPECT_EQ(formattedNumber(u"%.99999f", 1e308).length(), 309u + 1 + 4096);
}

} // namespace
} // namespace kestrine
