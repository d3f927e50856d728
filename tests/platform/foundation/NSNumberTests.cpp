#include "platform/foundation/NSNumber.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>

namespace kestrine {
namespace {

TEST(NSNumber, integersWrapAroundInNarrowerTypes) {
    EXPECT_EQ(NSNumber(std::int32_t{300}).charValue(), 44);
    EXPECT_EQ(NSNumber(std::int32_t{-1}).unsignedIntValue(), 0xffffffffu);
    EXPECT_EQ(NSNumber(std::uint64_t{0xffffffff80000000}).intValue(),
              std::numeric_limits<std::int32_t>::min());
    EXPECT_EQ(NSNumber(std::uint16_t{65535}).shortValue(), -1);
    EXPECT_EQ(NSNumber(std::int8_t{-1}).longLongValue(), -1);
}

TEST(NSNumber, floatingPointNumbersAreRoundedTowardsZero) {
    EXPECT_EQ(NSNumber(2.9).intValue(), 2);
    EXPECT_EQ(NSNumber(-2.9f).intValue(), -2);
    EXPECT_EQ(NSNumber(-0.5).unsignedIntValue(), 0u);
    EXPECT_EQ(NSNumber(127.9).charValue(), 127);
}

TEST(NSNumber, floatingPointNumbersAreLimitedToTheRangeOfTheType) {
    const NSNumber huge(1e300);
    const NSNumber tiny(-1e300);
    EXPECT_EQ(huge.charValue(), 127);
    EXPECT_EQ(tiny.shortValue(), -32768);
    EXPECT_EQ(huge.intValue(), std::numeric_limits<std::int32_t>::max());
    EXPECT_EQ(huge.longLongValue(), std::numeric_limits<std::int64_t>::max());
    EXPECT_EQ(NSNumber(9223372036854775808.0).longLongValue(), std::numeric_limits<std::int64_t>::max());
    EXPECT_EQ(tiny.longLongValue(), std::numeric_limits<std::int64_t>::min());
    EXPECT_EQ(huge.unsignedIntValue(), 0xffffffffu);
    EXPECT_EQ(tiny.unsignedIntValue(), 0u);
    EXPECT_EQ(NSNumber(std::numeric_limits<float>::infinity()).intValue(),
              std::numeric_limits<std::int32_t>::max());
    EXPECT_EQ(NSNumber(std::nan("")).intValue(), 0);
}

TEST(NSNumber, anyNumberExceptZeroIsTrue) {
    EXPECT_TRUE(NSNumber(true).boolValue());
    EXPECT_TRUE(NSNumber(std::int8_t{-3}).boolValue());
    EXPECT_TRUE(NSNumber(0.25f).boolValue());
    EXPECT_FALSE(NSNumber(std::uint64_t{0}).boolValue());
    EXPECT_FALSE(NSNumber(-0.0).boolValue());
}

TEST(NSNumber, textIsDecimal) {
    EXPECT_EQ(NSNumber(true).stringValue(), "1");
    EXPECT_EQ(NSNumber(std::int8_t{-7}).stringValue(), "-7");
    EXPECT_EQ(NSNumber(std::numeric_limits<std::uint64_t>::max()).stringValue(), "18446744073709551615");
    EXPECT_EQ(NSNumber(2.8f).stringValue(), "2.8");
    EXPECT_EQ(NSNumber(0.1).stringValue(), "0.1");
    EXPECT_EQ(NSNumber(1e20f).stringValue(), "1e+20");
    EXPECT_EQ(NSNumber(1.0 / 3).stringValue(), "0.3333333333333333");
    EXPECT_EQ(NSNumber(3.0f).stringValue(), "3");
    EXPECT_EQ(NSNumber(-2.2250738585072014e-308).stringValue(), "-2.225073858507201e-308");
}

TEST(NSNumber, notANumberIsPrintedWithoutSign) {
    EXPECT_EQ(NSNumber(std::copysign(std::numeric_limits<double>::quiet_NaN(), -1.0)).stringValue(), "nan");
    EXPECT_EQ(NSNumber(std::copysign(std::numeric_limits<float>::quiet_NaN(), -1.0f)).stringValue(), "nan");
    EXPECT_EQ(NSNumber(-std::numeric_limits<double>::infinity()).stringValue(), "-inf");
}

TEST(NSNumber, theTypeOfANumberIsKept) {
    EXPECT_EQ(NSNumber(std::int32_t{1}), NSNumber(std::int32_t{1}));
    EXPECT_FALSE(NSNumber(std::int32_t{1}) == NSNumber(1.0));
    EXPECT_FLOAT_EQ(NSNumber(std::int32_t{7}).floatValue(), 7.0f);
    EXPECT_DOUBLE_EQ(NSNumber(0.5f).doubleValue(), 0.5);
}

} // namespace
} // namespace kestrine
