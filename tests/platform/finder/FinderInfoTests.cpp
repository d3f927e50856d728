#include "platform/finder/FinderInfo.h"

#include <gtest/gtest.h>

namespace kestrine {
namespace {

using StoredBytes = std::array<std::uint8_t, 32>;

constexpr StoredBytes stored{'T',  'E',  'X',  'T',  't', 't', 'x', 't', // type and creator
                             0x81, 0x04,                                 // flags
                             0x00, 0x10, 0xFF, 0xFE,                     // location: down, to the right
                             0x12, 0x34,                                 // reserved
                             1,    2,    3,    4,    5,   6,   7,   8,   9, 10, 11, 12, 13, 14, 15, 16};

TEST(FinderInfo, aFourCharacterCodeIsBigEndian) {
    EXPECT_EQ(fourCharacterCode("TEXT"), 0x54455854u);
    EXPECT_EQ(fourCharacterCode("\xFF\x80  "), 0xFF802020u);
}

TEST(FinderInfo, theFieldsAreReadInTheStoredOrderBigEndian) {
    const FinderInfo information = finderInfoFromBytes(stored);
    EXPECT_EQ(information.type, fourCharacterCode("TEXT"));
    EXPECT_EQ(information.creator, fourCharacterCode("ttxt"));
    EXPECT_EQ(information.flags, 0x8104);
    EXPECT_EQ(information.location, (FinderLocation{16, -2}));
    EXPECT_EQ(information.reserved, 0x1234);
    EXPECT_EQ(information.extended.front(), 1);
    EXPECT_EQ(information.extended.back(), 16);
}

TEST(FinderInfo, theStoredBytesSurviveARoundTrip) {
    EXPECT_EQ(bytesOf(finderInfoFromBytes(stored)), stored);
    EXPECT_EQ(bytesOf(FinderInfo{}), StoredBytes{});
}

TEST(FinderInfo, everyByteOfTheStoredFormMatters) {
    for (std::size_t i = 0; i < stored.size(); ++i) {
        StoredBytes changed = stored;
        changed[i] ^= 0x80;
        EXPECT_NE(finderInfoFromBytes(changed), finderInfoFromBytes(stored)) << "byte " << i;
        EXPECT_EQ(bytesOf(finderInfoFromBytes(changed)), changed) << "byte " << i;
    }
}

} // namespace
} // namespace kestrine
