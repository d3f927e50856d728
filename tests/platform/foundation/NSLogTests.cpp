#include "platform/foundation/NSLog.h"

#include <gtest/gtest.h>

namespace kestrine {
namespace {

std::string shownBy(const NSString& line) {
    ::testing::internal::CaptureStderr();
    NSLog(line);
    return ::testing::internal::GetCapturedStderr();
}

TEST(NSLog, aLineGoesToStandardError) { EXPECT_EQ(shownBy(u"Label:2"), "Label:2\n"); }

TEST(NSLog, nothingInALineIsAFormat) { EXPECT_EQ(shownBy(u"100% %s %n"), "100% %s %n\n"); }

TEST(NSLog, bytesThatAreNoTextComeOutAsTheyWere) {
    EXPECT_EQ(shownBy(NSString::fromUTF8("caf\xe9")), "caf\xe9\n");
}

} // namespace
} // namespace kestrine
