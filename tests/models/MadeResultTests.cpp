#include "models/MadeResult.h"

#include "platform/host/files/FileContent.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

namespace kestrine {
namespace {

const Bytes content = {1, 2, 3};

TEST(MadeResult, isWhatWasWrittenIntoItsFile) {
    const testing::TemporaryFolder folder;
    NamelessFile file = *NamelessFile::createFor(folder.path().string(), 0600);
    ASSERT_TRUE(writeAll(file.descriptor(), content));
    const Result<MadeResult> made = MadeResult::of(std::move(file));
    ASSERT_TRUE(made);
    EXPECT_EQ(made->content->size(), 3u);
}

TEST(MadeResult, isAFailureIfNothingWasWritten) {
    const testing::TemporaryFolder folder;
    const Result<MadeResult> made = MadeResult::of(*NamelessFile::createFor(folder.path().string(), 0600));
    ASSERT_FALSE(made);
    EXPECT_EQ(made.failure().reason, Reason::crashed);
}

} // namespace
} // namespace kestrine
