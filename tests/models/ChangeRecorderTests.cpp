// What jobs record before they change files, and the results of earlier runs that they replace.
#include "models/ChangeRecorder.h"

#include "models/ResizeJob.h"
#include "platform/host/files/FileStatus.h"
#include "platform/imageio/Codecs.h"
#include "tests/support/EnvironmentVariable.h"
#include "tests/support/Pictures.h"
#include "tests/support/PresetBuilder.h"
#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace kestrine {
namespace {

using ::testing::ElementsAre;
using testing::makeSet;
using ::testing::Pair;

/// Stores every reported result, and whether source and result existed when it was reported.
class Remembering final : public ChangeRecorder {
public:
    Result<void> record(const IntendedResult& result) override {
        results.push_back(result);
        sourceWasThere = sourceWasThere && itemExists(result.source);
        resultWasThere = resultWasThere || (result.path != result.source && itemExists(result.path))
                         || itemExists(result.hiddenPath);
        if (whenRecorded)
            whenRecorded();
        return fails ? Result<void>(Failure{Reason::noSpace, "the disk is full"}) : Result<void>();
    }

    void ended(const IntendedResult& result, bool isReplaced) override {
        endings.emplace_back(result.source, isReplaced);
    }

    bool fails = false;
    std::function<void()> whenRecorded;
    std::vector<IntendedResult> results;
    std::vector<std::pair<std::string, bool>> endings;
    bool sourceWasThere = true, resultWasThere = false;
};

class Recording : public ::testing::Test {
protected:
    Recording() { writePicture(); }

    void writePicture() {
        folder.write(name, *encoded(png::encode,
                                    *rowsOfPixels(std::make_shared<PixelBuffer>(testing::makePhoto(
                                        {30, 20, ColorModel::rgb, false, SampleDepth::bits8}))),
                                    {}));
    }

    JobOutcome run(bool replaces, std::vector<EarlierResult> earlier = {}) {
        const auto set =
            makeSet(u"Web", {{u"replaceFile", replaces}, {u"maxSize", 10.0F}, {u"resizeType", 2}});
        const NSString path = NSString::fromUTF8(folder / name);
        return runJob({.path = path,
                       .saveFolderPath = path.deletingLastPathComponent(),
                       .recipes = recipesOf({set}),
                       .policy = {.onlyWithResult = true},
                       .recorder = &recorder,
                       .earlier = std::move(earlier)})
            .front();
    }

    std::string name = "a.png"; ///< of the picture
    const testing::TemporaryFolder folder;
    const testing::EnvironmentVariable dataHome{"XDG_DATA_HOME", folder / "data"};
    Remembering recorder;
};

TEST_F(Recording, aReplacementIsRecordedBeforeAnythingChanges) {
    EXPECT_TRUE(run(true).isWritten);
    ASSERT_EQ(recorder.results.size(), 1U);
    const IntendedResult& result = recorder.results.front();
    EXPECT_TRUE(result.replacesSource && recorder.sourceWasThere && !recorder.resultWasThere);
    EXPECT_EQ(result.path, folder / "a.png");
    EXPECT_EQ(result.content, *digestOfFile(folder / "a.png"));
}

TEST_F(Recording, theEndOfAReplacementIsReported) {
    EXPECT_TRUE(run(true).isWritten);
    EXPECT_THAT(recorder.endings, ElementsAre(Pair(folder / "a.png", true)));
}

TEST_F(Recording, aReplacementThatFailsIsReported) {
    name = "data/Trash/files/a.png"; // what is in the trash cannot go there
    writePicture();
    EXPECT_TRUE(run(true).trashFailure.has_value());
    EXPECT_THAT(recorder.endings, ElementsAre(Pair(folder / name, false)));
}

TEST_F(Recording, anOriginalThatWasChangedDuringTheConversionIsNotReplaced) {
    recorder.whenRecorded = [&] { folder.write("a.png", "edited"); };
    const JobOutcome outcome = run(true);
    EXPECT_EQ(outcome.refusal, Refusal::changed);
    EXPECT_TRUE(!outcome.isWritten && outcome.failure && outcome.trashedPath.empty());
    EXPECT_EQ(testing::readFile(folder / "a.png"), "edited");
    EXPECT_THAT(recorder.endings, ElementsAre(Pair(folder / "a.png", false)));
    EXPECT_FALSE(itemExists(recorder.results.front().hiddenPath));
}

TEST_F(Recording, aNewResultIsRecordedBeforeItHasItsName) {
    folder.write("Web/a.png", "somebody else's");
    EXPECT_TRUE(run(false).isWritten);
    ASSERT_EQ(recorder.results.size(), 1U);
    EXPECT_FALSE(recorder.results.front().replacesSource || recorder.resultWasThere);
    EXPECT_EQ(recorder.results.front().wanted, folder / "Web/a.png");
    EXPECT_EQ(recorder.results.front().path, folder / "Web/a_1.png");
    EXPECT_TRUE(recorder.endings.empty());
}

TEST_F(Recording, whatCannotBeRecordedIsNotDone) {
    recorder.fails = true;
    const Bytes before = testing::readFileBytes(folder / "a.png");
    for (const bool replaces : {true, false}) {
        const JobOutcome outcome = run(replaces);
        EXPECT_FALSE(outcome.isWritten);
        EXPECT_EQ(outcome.failure->text, "the disk is full");
    }
    EXPECT_EQ(testing::readFileBytes(folder / "a.png"), before);
    EXPECT_FALSE(itemExists(folder / "Web/a.png") || itemExists(folder / "data"));
    EXPECT_TRUE(recorder.endings.empty());
}

TEST_F(Recording, anEarlierResultIsReplacedIfItIsUnchanged) {
    const std::string path = folder.write("Web/a_7.png", "an earlier result");
    const std::vector<EarlierResult> earlier = {{folder / "Web/a.png", path, *digestOfFile(path)}};
    EXPECT_EQ(run(false, earlier).path, NSString::fromUTF8(path));
    EXPECT_EQ(recorder.results.front().path, path);
    EXPECT_EQ(recorder.results.front().content, *digestOfFile(path));

    folder.write("Web/a_7.png", "edited");
    EXPECT_EQ(run(false, earlier).path, NSString::fromUTF8(folder / "Web/a.png"));
    EXPECT_EQ(testing::readFile(path), "edited");
}

} // namespace
} // namespace kestrine
