#include "platform/host/process/OwnProcess.h"

#include "tests/support/IsolatedProcess.h"

#include <gtest/gtest.h>

namespace kestrine {
namespace {

TEST(OwnProcess, isCurrentOnlyInTheProcessThatMadeTheObject) {
    const OwnProcess made;
    EXPECT_TRUE(made.isCurrent());
    testing::runIsolated([&] {
        EXPECT_FALSE(made.isCurrent());
        EXPECT_TRUE(OwnProcess().isCurrent());
    });
    EXPECT_TRUE(made.isCurrent());
}

} // namespace
} // namespace kestrine
