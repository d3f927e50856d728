// The stricter rules of a job: what kestrinectl asks for.
#include "models/ResizeJob.h"

#include "models/ResizeSet.h"
#include "platform/imageio/Codecs.h"
#include "platform/imageio/LocalSource.h"
#include "platform/imageio/PictureEngine.h"
#include "tests/support/InterposedCalls.h"
#include "tests/support/Pictures.h"
#include "tests/support/PresetBuilder.h"
#include "tests/support/TemporaryFolder.h"

#include <cerrno>
#include <cstdlib>
#include <sys/stat.h>

namespace kestrine {

using testing::makeSet;

namespace {

constexpr JobPolicy strict = {.onlyWithResult = true, .refusesDamaged = true};
constexpr JobPolicy acceptsDamage = {.onlyWithResult = true, .refusesDamaged = false};

Bytes photo() {
    const auto pixels = testing::makePhoto({300, 200, ColorModel::rgb, false, SampleDepth::bits8});
    return *encoded(jpeg::encode, *rowsOfPixels(std::make_shared<PixelBuffer>(pixels)), {.quality = 0.9});
}

Bytes cutOffPhoto() {
    Bytes bytes = photo();
    bytes.resize(bytes.size() / 2);
    return bytes;
}

std::int64_t sizeOfFile(int file) {
    struct stat status {};
    return ::fstat(file, &status) == 0 ? status.st_size : -1;
}

/// Counts the openings of files while it lives. They fail with `failure`, or succeed in this process.
class CountingEngine final : public PictureEngine {
public:
    explicit CountingEngine(std::optional<Reason> failure) : failure_(failure) { setCurrent(this); }
    ~CountingEngine() override { setCurrent(nullptr); }

    Result<std::shared_ptr<Source>> open(std::shared_ptr<const ByteReader> file, FileQuestion) override {
        ++openings;
        if (failure_)
            return Failure{*failure_, "on purpose"};
        return std::shared_ptr<Source>(*LocalSource::open(std::move(file)));
    }

    Result<Bytes> answer(std::shared_ptr<const ByteReader> file, FileQuestion question) override {
        return question(file);
    }

    int openings = 0;

private:
    const std::optional<Reason> failure_;
};

/// A folder with pictures, and a private home folder with a trash.
class StrictJob : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_EQ(setenv("XDG_DATA_HOME", (folder / "data").c_str(), 1), 0); }
    void TearDown() override { unsetenv("XDG_DATA_HOME"); }

    std::vector<JobOutcome> run(const std::string& name, const ResizeSets& sets,
                                JobPolicy policy = strict) const {
        const NSString path = NSString::fromUTF8(folder / name);
        return runJob({path, std::nullopt, path.deletingLastPathComponent(), recipesOf(sets), policy});
    }
    JobOutcome replace(const std::string& name, JobPolicy policy = strict) const {
        return run(name, {makeSet(u"Web", {{u"replaceFile", true}, {u"formatType", 0}})}, policy).front();
    }
    bool exists(const std::string& name) const { return std::filesystem::exists(folder.path() / name); }

    const testing::TemporaryFolder folder;
};

} // namespace

TEST_F(StrictJob, theFileIsOpenedOnceForPixelsTurnAndExif) {
    folder.write("a.jpg", photo());
    const auto set = makeSet(u"Web", {{u"formatType", 0}, {u"autoRotate", true}, {u"attachExifData", true}});
    const auto converting = makeSet(u"Print", {{u"convertResolution", false}, {u"attachExifData", true}});
    const CountingEngine engine(std::nullopt);
    for (const JobOutcome& outcome : run("a.jpg", {set, converting}))
        EXPECT_TRUE(outcome.isWritten);
    EXPECT_EQ(engine.openings, 1);
}

TEST_F(StrictJob, aFileThatEndedItsDecoderIsNotTriedAgain) {
    folder.write("a.jpg", photo());
    for (const Reason reason : {Reason::crashed, Reason::timeLimit}) {
        const CountingEngine engine(reason);
        for (const JobOutcome& outcome : run("a.jpg", {makeSet(u"One"), makeSet(u"Two")}))
            EXPECT_EQ(outcome.failure->text, "on purpose");
        EXPECT_EQ(engine.openings, 1);
    }
}

TEST_F(StrictJob, aFileThatCouldNotBeLoadedIsTriedAgainForEachSet) {
    folder.write("a.jpg", photo());
    const CountingEngine engine(Reason::inputOutput);
    (void)run("a.jpg", {makeSet(u"One"), makeSet(u"Two")});
    EXPECT_EQ(engine.openings, 4) << "by the job and by each set's conversion";
}

TEST_F(StrictJob, replacesAnOriginalAndReportsWhereItWent) {
    const Bytes original = photo();
    folder.write("a.jpg", original);
    const JobOutcome outcome = replace("a.jpg");
    EXPECT_TRUE(outcome.isWritten && !outcome.failure && !outcome.trashFailure && !outcome.damage);
    EXPECT_EQ(outcome.path, NSString::fromUTF8(folder / "a.jpg"));
    EXPECT_EQ(testing::readFileBytes(outcome.trashedPath), original);
    EXPECT_FALSE(testing::readFileBytes(folder / "a.jpg") == original);
}

TEST_F(StrictJob, aMissingFolderForTheResultIsTheReportedReason) {
    folder.write("a.jpg", photo());
    const JobOutcome outcome =
        runJob({NSString::fromUTF8(folder / "a.jpg"), {}, {}, recipesOf({makeSet(u"Web")}), strict}).front();
    EXPECT_FALSE(outcome.isWritten);
    EXPECT_EQ(outcome.failure->text, "there is no folder for the result");
}

TEST_F(StrictJob, aFileThatIsNotAPictureStaysInItsPlaceAndNoFolderIsMade) {
    folder.write("a.jpg", "words");
    const JobOutcome outcome = replace("a.jpg");
    EXPECT_FALSE(outcome.isWritten);
    EXPECT_TRUE(outcome.failure && outcome.trashedPath.empty());
    EXPECT_EQ(testing::readFile(folder / "a.jpg"), "words");
    EXPECT_TRUE(run("a.jpg", {makeSet(u"Web")}).front().failure);
    EXPECT_FALSE(exists("Web") || exists("data"));
}

TEST_F(StrictJob, theWholeResultIsOnTheDiskBeforeTheOriginalMoves) {
    folder.write("a.jpg", photo());
    std::vector<std::string> events;
    testing::InterposedCalls calls;
    calls.onSync = [&](int file) {
        events.push_back("sync " + std::to_string(sizeOfFile(file)));
        return 0;
    };
    calls.onRename = [&](const std::string& oldName, const std::string&) {
        events.push_back(oldName == "a.jpg" ? "trash" : "publish");
        return 0;
    };
    EXPECT_TRUE(replace("a.jpg").isWritten);
    const std::string sync = "sync " + std::to_string(std::filesystem::file_size(folder / "a.jpg"));
    std::erase_if(events,
                  [&](const std::string& event) { return event.starts_with("sync") && event != sync; });
    EXPECT_EQ(events, (std::vector<std::string>{sync, "trash", "publish"}));
}

TEST_F(StrictJob, aResultThatCannotBeWrittenLeavesTheOriginalInItsPlace) {
    folder.write("a.jpg", photo());
    testing::InterposedCalls calls;
    calls.onSync = [](int file) { return sizeOfFile(file) > 1000 ? EIO : 0; };
    const JobOutcome outcome = replace("a.jpg");
    EXPECT_TRUE(outcome.failure && !outcome.isWritten && outcome.trashedPath.empty());
    EXPECT_EQ(testing::readFileBytes(folder / "a.jpg"), photo());
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.path()), {}), 1) << "nothing is left";
}

TEST_F(StrictJob, anOriginalWithTheLongestNameIsReplacedUnlessTheResultNeedsALongerOne) {
    const std::string name(251, 'n');
    folder.write(name + ".jpg", photo());
    EXPECT_TRUE(replace(name + ".jpg").isWritten);
    folder.write(name + ".png", "somebody else's");
    const auto toPNG = makeSet(u"Web", {{u"replaceFile", true}, {u"formatType", 1}});
    const JobOutcome outcome = run(name + ".jpg", {toPNG}).front();
    EXPECT_TRUE(outcome.failure && !outcome.isWritten && outcome.trashedPath.empty());
    EXPECT_TRUE(exists(name + ".jpg"));
}

TEST_F(StrictJob, aResultThatCannotGetItsNameReportsWhereTheOriginalWent) {
    folder.write("a.jpg", photo());
    testing::InterposedCalls calls;
    calls.onRename = [](const std::string& oldName, const std::string&) {
        return oldName == "a.jpg" ? 0 : EIO;
    };
    const JobOutcome outcome = replace("a.jpg");
    EXPECT_FALSE(outcome.isWritten);
    EXPECT_TRUE(outcome.failure);
    EXPECT_EQ(testing::readFileBytes(outcome.trashedPath), photo()) << "the message can name its place";
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.path()), {}), 1) << "only the trash";
}

TEST_F(StrictJob, aNameThatIsTakenAtTheLastMomentIsNotOverwritten) {
    folder.write("a.jpg", photo());
    testing::InterposedCalls calls;
    calls.onRename = [&](const std::string&, const std::string& newName) {
        if (newName == "a.jpg" && !exists("a.jpg"))
            folder.write("a.jpg", "somebody else's");
        return 0;
    };
    const JobOutcome outcome = replace("a.jpg");
    EXPECT_TRUE(outcome.isWritten);
    EXPECT_EQ(outcome.path, NSString::fromUTF8(folder / "a_1.jpg"));
    EXPECT_EQ(testing::readFile(folder / "a.jpg"), "somebody else's");
}

TEST_F(StrictJob, whenTheTrashRefusesTheResultGetsTheNextNameAndTheReasonIsKept) {
    folder.write("data/Trash/files/b.jpg", photo());
    const JobOutcome outcome = replace("data/Trash/files/b.jpg");
    EXPECT_TRUE(outcome.isWritten && outcome.trashFailure && outcome.trashedPath.empty());
    EXPECT_EQ(outcome.path, NSString::fromUTF8(folder / "data/Trash/files/b_1.jpg"));
}

TEST_F(StrictJob, aDamagedPictureGivesNoResultAndIsNotReplaced) {
    folder.write("a.jpg", cutOffPhoto());
    const JobOutcome outcome = replace("a.jpg");
    EXPECT_TRUE(outcome.refusal == Refusal::damaged && outcome.damage && outcome.failure
                && !outcome.isWritten);
    EXPECT_EQ(testing::readFileBytes(folder / "a.jpg"), cutOffPhoto());
    for (const JobOutcome& each : run("a.jpg", {makeSet(u"One"), makeSet(u"Two")}))
        EXPECT_EQ(each.refusal, Refusal::damaged);
    EXPECT_FALSE(exists("One") || exists("Two") || exists("data"));
}

TEST_F(StrictJob, anAcceptedDamagedPictureIsReplacedAndItsDamageIsReported) {
    folder.write("a.jpg", cutOffPhoto());
    const JobOutcome outcome = replace("a.jpg", acceptsDamage);
    EXPECT_TRUE(outcome.isWritten && outcome.damage && !outcome.failure && outcome.refusal == Refusal::none);
    EXPECT_EQ(testing::readFileBytes(outcome.trashedPath), cutOffPhoto());
}

TEST_F(StrictJob, theReasonForAMissingFolderIsTheFirstOne) {
    folder.write("a.jpg", photo());
    folder.write("Web", "a file where the folder should be");
    const JobOutcome outcome = run("a.jpg", {makeSet(u"Web/deep/er")}).front();
    ASSERT_TRUE(outcome.failure);
    EXPECT_EQ(outcome.failure->text,
              "cannot create the folder " + (folder / "Web/deep") + ": Not a directory");
}

TEST_F(StrictJob, theOtherSetsOfAJobAreAppliedWhenOneGivesNothing) {
    folder.write("a.jpg", photo());
    const auto outcomes = run("a.jpg", {makeSet(u"One", {{u"formatType", 77}}), makeSet(u"Two")});
    ASSERT_EQ(outcomes.size(), 2U);
    EXPECT_EQ(outcomes[0].failure->text, "the set gives no output for it");
    EXPECT_TRUE(outcomes[1].isWritten && exists("Two/a.png"));
}

TEST_F(StrictJob, aPictureThatIsTooNarrowForTheSetSaysSo) {
    folder.write("a.ppm", "P6 1 500 255\n" + std::string(1500, 'x'));
    const auto outcomes = run("a.ppm", {makeSet(u"Small", {{u"resizeType", 2}, {u"maxSize", 100.0F}})});
    ASSERT_TRUE(outcomes.front().failure);
    EXPECT_EQ(outcomes.front().failure->text,
              "the picture is too narrow: a side of the result would be shorter than one pixel");
}

} // namespace kestrine
