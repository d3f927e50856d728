#include "_MyClasses/Class/ExifTag/ByteOrder.h"

#include <array>
#include <gtest/gtest.h>

namespace kestrine::testing {
namespace {

TEST(ByteOrder, aTagKeyIsFourUpperCaseHexadecimalDigits) {
    EXPECT_EQ(keyForTag(0x0112), "0112");
    EXPECT_EQ(keyForTag(0xa005), "A005");
    EXPECT_EQ(keyForTag(0), "0000");
    EXPECT_EQ(keyForTag(0xffff), "FFFF");
}

TEST(ByteOrder, invertingReversesTheBytesInPlaceAndReturnsTheNumber) {
    std::uint16_t two = 0x0102;
    EXPECT_EQ(invertByteOrder16(&two), 0x0201);
    EXPECT_EQ(two, 0x0201);
    std::uint32_t four = 0x01020304;
    EXPECT_EQ(invertByteOrder32(&four), 0x04030201u);
    EXPECT_EQ(four, 0x04030201u);
    std::uint64_t eight = 0x0102030405060708;
    EXPECT_EQ(invertByteOrder64(&eight), 0x0807060504030201u);
    EXPECT_EQ(eight, 0x0807060504030201u);
}

TEST(ByteOrder, theBytesNeedNoAlignment) {
    std::array<std::uint8_t, 9> bytes{0, 1, 2, 3, 4, 5, 6, 7, 8};
    invertByteOrder64(bytes.data() + 1);
    EXPECT_EQ(bytes, (std::array<std::uint8_t, 9>{0, 8, 7, 6, 5, 4, 3, 2, 1}));
}

} // namespace
} // namespace kestrine::testing
