// Reading Thunar's file when there is no memory.
#include "kestrinectl/desktop/ThunarFile.h"
#include "tests/support/FailingAllocation.h"

#include <gtest/gtest.h>

namespace kestrine {
namespace {

/// Whether the content is read although the allocation after `successes` others fails.
bool isReadAfter(int successes, const std::string& content) {
    const testing::FailingAllocation failing(successes);
    try {
        return parseThunarFile(content).ok();
    } catch (const std::bad_alloc&) {
        return false;
    }
}

TEST(ThunarFile, eachAllocationThatFailsEndsTheReading) {
    const std::string content = "<actions><action/><action><name>" + std::string(100, 'n')
                                + "</name><directories/></action></actions>";
    ASSERT_TRUE(parseThunarFile(content)); // which opens the library
    int failures = 0;
    while (!isReadAfter(failures, content))
        ++failures;
    EXPECT_GE(failures, 5); // two actions, a long text, two fields
}

} // namespace
} // namespace kestrine
