#include "models/ResizeUnit.h"

#include "platform/foundation/NSCollections.h"
#include "platform/foundation/NSException.h"
#include "platform/foundation/NSNumber.h"
#include "tests/support/PresetBuilder.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

namespace kestrine {

namespace {

/// Where a job on a file that is no picture would have written.
std::string outputPathOf(const std::shared_ptr<ResizeUnit>& job) {
    job->resize();
    return job->outcomes().front().path.utf8();
}

} // namespace

TEST(ResizeUnitFields, aFolderPathThatIsNoStringIsRefusedAndTheOneBeforeStays) {
    const testing::TemporaryFolder folder;
    const auto job = std::make_shared<ResizeUnit>();
    job->setValueForKey(NSString::fromUTF8(folder / "a.jpg").object(), u"filepath");
    job->setValueForKey(NSString::fromUTF8(folder / "p").object(), u"saveFolderPath");
    job->setValueForKey(std::make_shared<NSArray>(std::vector<Object>{testing::makeSet(u"Web")}),
                        u"resizeSets");
    EXPECT_THROW(job->setValueForKey(std::make_shared<NSNumber>(3), u"saveFolderPath"), NSException);
    EXPECT_EQ(outputPathOf(job), folder / "p/Web/a.png");
}

TEST(ResizeUnitFields, nilClearsTheFolderPathSoThatThereIsNoOutput) {
    const testing::TemporaryFolder folder;
    const auto job = std::make_shared<ResizeUnit>();
    job->setValueForKey(NSString::fromUTF8(folder / "a.jpg").object(), u"filepath");
    job->setValueForKey(NSString::fromUTF8(folder / "p").object(), u"saveFolderPath");
    job->setValueForKey(nullptr, u"saveFolderPath");
    job->setValueForKey(std::make_shared<NSArray>(std::vector<Object>{testing::makeSet(u"Web")}),
                        u"resizeSets");
    EXPECT_EQ(outputPathOf(job), "");
}

} // namespace kestrine
