#include "kestrinectl/desktop/Notification.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace kestrine {
namespace {

TEST(Notification, optionsEndBeforeTheTexts) {
    EXPECT_THAT(notificationArguments("-s", {"-b"}),
                testing::ElementsAre("--app-name=kestrine", "--icon=dialog-error", "--", "-s", "-b"));
}

TEST(Notification, linesAreShownAsTheyAre) {
    EXPECT_EQ(notificationArguments("", {"<b>'", "a\\n\xff", "x\ny"}).back(),
              "&lt;b&gt;&#39;\na\\\\n\\\\xff\nx\\\\ny");
}

} // namespace
} // namespace kestrine
