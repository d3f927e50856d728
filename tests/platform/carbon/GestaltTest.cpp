#include "platform/carbon/Gestalt.h"
#include "platform/carbon/SystemVersion.h"

#include <gtest/gtest.h>

namespace kestrine {
namespace {

TEST(Gestalt, reportsTheVersionThatWasSet) {
    std::int32_t version = 0;
    EXPECT_EQ(Gestalt(gestaltSystemVersion, &version), noErr);
    EXPECT_EQ(version, 0x1058);
    setSystemVersion(0x1060);
    EXPECT_EQ(Gestalt(gestaltSystemVersion, &version), noErr);
    EXPECT_EQ(version, 0x1060);
    setSystemVersion(0x1058);
}

TEST(Gestalt, refusesOtherSelectors) {
    std::int32_t answer = 7;
    EXPECT_EQ(Gestalt(fourCharacterCode("qtim"), &answer), gestaltUndefSelectorErr);
    EXPECT_EQ(Gestalt(gestaltSystemVersion, nullptr), paramErr);
    EXPECT_EQ(answer, 7);
}

} // namespace
} // namespace kestrine
