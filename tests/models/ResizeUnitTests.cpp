#include "models/ResizeUnit.h"

#include "_MyClasses/Class/ExifTag/ExifTagReader.h"
#include "platform/foundation/NSCollections.h"
#include "platform/foundation/NSException.h"
#include "platform/foundation/NSNotificationCenter.h"
#include "platform/imageio/Codecs.h"
#include "platform/imageio/LocalSource.h"
#include "tests/support/ExifBuilder.h"
#include "tests/support/InterposedCalls.h"
#include "tests/support/Pictures.h"
#include "tests/support/PresetBuilder.h"
#include "tests/support/TemporaryFolder.h"

#include <csignal>
#include <cstdlib>
#include <gtest/gtest.h>
#include <sys/stat.h>

namespace kestrine {

using testing::makeSet;

namespace {

Bytes smallPicture(Encoder encode, ByteView exif = {}) {
    const auto pixels = testing::makePhoto({30, 20, ColorModel::rgb, false, SampleDepth::bits8});
    const auto rows = rowsOfPixels(std::make_shared<PixelBuffer>(pixels));
    return *encoded(encode, *rows, {.quality = 0.8, .exif = exif});
}

RowFormat formatOf(const std::string& path) {
    return (*openImage(*readerOfPath(path)))->frames().front().format;
}

/// How many SIGTERMs have arrived, and whether the result was there when the last one arrived.
volatile std::sig_atomic_t arrivals = 0;
volatile std::sig_atomic_t resultWasThere = 0;
std::string awaitedResult;

void noteArrival(int) {
    struct stat status;
    arrivals = arrivals + 1;
    resultWasThere = ::stat(awaitedResult.c_str(), &status) == 0;
}

/// A folder with pictures, in which a job runs, and a private home folder with a trash.
class JobOnOneFile : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_EQ(setenv("XDG_DATA_HOME", (folder / "data").c_str(), 1), 0);
        jpeg = NSString::fromUTF8(folder.write("p/a.jpg", smallPicture(jpeg::encode)));
        token = NSNotificationCenter::defaultCenter().addObserver(
            RUResizeHasDone, nullptr, [this](const NSNotification& n) {
                ++notifications;
                notifier = n.object;
                resultPaths.clear();
                const auto paths =
                    std::dynamic_pointer_cast<const NSArray>(n.userInfo->objectForKey(resultPathsKey));
                for (const Object& path : paths->elements())
                    resultPaths.push_back(relative(NSString::fromObject(path)->utf8()));
            });
    }
    void TearDown() override {
        NSNotificationCenter::defaultCenter().removeObserver(token);
        unsetenv("XDG_DATA_HOME");
    }

    void run(const Object& filepath, const std::vector<Object>& sets) {
        const auto job = std::make_shared<ResizeUnit>();
        job->setValueForKey(filepath, u"filepath");
        job->setValueForKey(NSString::fromUTF8(folder / "p").object(), u"saveFolderPath");
        job->setValueForKey(std::make_shared<NSArray>(sets), u"resizeSets");
        job->resize();
    }

    /// The path without the test's own folder in front.
    std::string relative(const std::string& path) const {
        const std::string start = folder.path().string() + "/";
        return path.starts_with(start) ? path.substr(start.size()) : path;
    }
    bool exists(const std::string& name) const { return std::filesystem::exists(folder.path() / name); }
    std::string trashed(const std::string& name) const {
        return testing::readFile(folder / ("data/Trash/files/" + name));
    }

    const testing::TemporaryFolder folder;
    NSString jpeg;
    NSNotificationCenter::Token token{};
    int notifications = 0;
    Object notifier; ///< of the last notification
    std::vector<std::string> resultPaths;
};

} // namespace

TEST_F(JobOnOneFile, replacingAJPEGByAJPEGTrashesItAndTakesItsPlaceWithoutASuffix) {
    const std::string original = testing::readFile(folder / "p/a.jpg");
    run(jpeg.object(),
        {makeSet(u"Web",
                 {{u"replaceFile", true}, {u"formatType", 0}, {u"width", 10.0F}, {u"height", 8.0F}})});
    EXPECT_TRUE(trashed("a.jpg") == original);
    EXPECT_FALSE(testing::readFile(folder / "p/a.jpg") == original);
    EXPECT_EQ(resultPaths, std::vector<std::string>{"p/a.jpg"});
    EXPECT_FALSE(exists("p/a_1.jpg"));
}

TEST_F(JobOnOneFile, replacingByAPNGTrashesTheJPEGAndWritesThePNGBesideWhereItWas) {
    run(jpeg.object(), {makeSet(u"Web", {{u"replaceFile", true}})});
    EXPECT_FALSE(exists("p/a.jpg"));
    EXPECT_TRUE(exists("p/a.png"));
}

TEST_F(JobOnOneFile, replacingByAPNGThatExistsAlreadyGivesTheNextName) {
    folder.write("p/a.png", "mine");
    run(jpeg.object(), {makeSet(u"Web", {{u"replaceFile", true}})});
    EXPECT_EQ(testing::readFile(folder / "p/a.png"), "mine");
    EXPECT_EQ(resultPaths, std::vector<std::string>{"p/a_1.png"});
    EXPECT_FALSE(exists("p/a.jpg"));
}

TEST_F(JobOnOneFile, twoReplacingSetsReplaceNothingAndUseTheirFolders) {
    run(jpeg.object(),
        {makeSet(u"One", {{u"replaceFile", true}}), makeSet(u"Two", {{u"replaceFile", true}})});
    EXPECT_TRUE(exists("p/a.jpg"));
    EXPECT_EQ(resultPaths, (std::vector<std::string>{"p/One/a.png", "p/Two/a.png"}));
    EXPECT_TRUE(exists("p/One/a.png") && exists("p/Two/a.png"));
}

TEST_F(JobOnOneFile, twoSetsWithTheSameNameAndFormatShareAFolder) {
    run(jpeg.object(), {makeSet(u"Web"), makeSet(u"Web")});
    EXPECT_EQ(resultPaths, (std::vector<std::string>{"p/Web/a.png", "p/Web/a_1.png"}));
    EXPECT_TRUE(exists("p/Web/a.png") && exists("p/Web/a_1.png"));
}

TEST_F(JobOnOneFile, theFileIsDecodedOnceWhateverTheSetsAre) {
    const auto decodes = [this](const std::vector<Object>& sets) {
        const std::uint64_t before = LocalSource::decodesStarted();
        run(jpeg.object(), sets);
        return LocalSource::decodesStarted() - before;
    };
    EXPECT_EQ(decodes({makeSet(u"One"), makeSet(u"Two"), makeSet(u"Three", {{u"highQuality", false}})}), 1U);
    EXPECT_EQ(decodes({makeSet(u"One"), makeSet(u"Two", {{u"convertResolution", false}}), makeSet(u"Three"),
                       makeSet(u"Four", {{u"convertResolution", false}})}),
              1U);
    EXPECT_EQ(decodes({makeSet(u"One")}), 1U);
}

TEST_F(JobOnOneFile, eachSetMeasuresInPixelsOrPointsAsConfigured) {
    const auto pixels = testing::makePhoto({300, 200, ColorModel::rgb, false, SampleDepth::bits8});
    const auto rows = rowsOfPixels(std::make_shared<PixelBuffer>(pixels));
    const std::string scan =
        folder.write("p/scan.tif", *encoded(tiff::encode, *rows, {.resolution = {300, 300}}));
    const auto unscaled = [](const char16_t* name, bool converts) {
        return makeSet(name, {{u"resizeType", 3}, {u"formatType", 0}, {u"convertResolution", converts}});
    };
    run(NSString::fromUTF8(scan).object(), {unscaled(u"Pixels", true), unscaled(u"Points", false)});
    EXPECT_EQ(formatOf(folder / "p/Pixels/scan.jpg").width, 300U);
    EXPECT_EQ(formatOf(folder / "p/Points/scan.jpg").width, 72U);
}

TEST_F(JobOnOneFile, theNotificationListsOnePathPerSetEvenWithoutAResult) {
    run(jpeg.object(), {makeSet(u"One", {{u"formatType", 77}}), makeSet(u"Two")});
    EXPECT_EQ(notifications, 1);
    EXPECT_EQ(resultPaths, (std::vector<std::string>{"p/One/a.jpg", "p/Two/a.png"}));
    EXPECT_TRUE(exists("p/One") && !exists("p/One/a.jpg"));
}

TEST_F(JobOnOneFile, aReplacingSetTrashesEvenAFileThatIsNotAPicture) {
    const NSString text = NSString::fromUTF8(folder.write("p/b.jpg", "no picture"));
    run(text.object(), {makeSet(u"Web", {{u"replaceFile", true}})});
    EXPECT_EQ(trashed("b.jpg"), "no picture");
    EXPECT_FALSE(exists("p/b.png"));
    EXPECT_EQ(resultPaths, std::vector<std::string>{"p/b.png"});
}

TEST_F(JobOnOneFile, withoutAResultThePathIsStillUnused) {
    const NSString text = NSString::fromUTF8(folder.write("p/b.jpg", "no picture"));
    folder.write("p/Web/b.png", "mine");
    run(text.object(), {makeSet(u"Web")});
    EXPECT_EQ(resultPaths, std::vector<std::string>{"p/Web/b_1.png"});
}

TEST_F(JobOnOneFile, aReplacedPhotographKeepsItsExifAndIsTurnedByIt) {
    const Bytes exif =
        testing::exifBlock({.ifd0 = {testing::exifText(0x010f, "Maker"), testing::exifShorts(0x0112, {6})}});
    folder.write("p/a.jpg", smallPicture(jpeg::encode, exif));
    run(jpeg.object(), {makeSet(u"Web", {{u"replaceFile", true},
                                         {u"formatType", 0},
                                         {u"resizeType", 3},
                                         {u"attachExifData", true},
                                         {u"autoRotate", true}})});
    EXPECT_EQ(formatOf(folder / "p/a.jpg").width, 20U) << "30 x 20 lies on its side";
    const auto reader = ExifTagReader::initWithPath(jpeg);
    ASSERT_NE(reader, nullptr);
    const auto orientation = reader->imageDirectionNumber();
    ASSERT_TRUE(orientation);
    EXPECT_EQ(orientation->intValue(), 1);
}

TEST_F(JobOnOneFile, onlyAReplacingResultIsOnTheDiskBeforeItAppears) {
    std::vector<std::uintmax_t> synced;
    testing::InterposedCalls calls;
    calls.onSync = [&](int file) {
        struct stat status;
        if (::fstat(file, &status) == 0 && S_ISREG(status.st_mode) && !exists("p/a.jpg"))
            synced.push_back(static_cast<std::uintmax_t>(status.st_size));
        return 0;
    };
    run(jpeg.object(), {makeSet(u"Web", {{u"formatType", 0}})});
    EXPECT_TRUE(synced.empty());
    run(jpeg.object(), {makeSet(u"Web", {{u"replaceFile", true}, {u"formatType", 0}})});
    EXPECT_EQ(synced, std::vector{std::filesystem::file_size(folder / "p/a.jpg")});
}

TEST_F(JobOnOneFile, aSignalThatComesWhileAnOriginalIsReplacedWaitsForTheResult) {
    awaitedResult = folder / "p/a.jpg";
    arrivals = 0;
    const auto before = std::signal(SIGTERM, noteArrival);
    testing::InterposedCalls calls;
    calls.onSync = [&](int) {
        if (!exists("p/a.jpg") && arrivals == 0)
            std::raise(SIGTERM);
        return 0;
    };
    run(jpeg.object(), {makeSet(u"Web", {{u"replaceFile", true}, {u"formatType", 0}})});
    EXPECT_EQ(arrivals, 1);
    EXPECT_TRUE(resultWasThere);
    std::raise(SIGTERM);
    EXPECT_EQ(arrivals, 2) << "afterwards signals arrive as before";
    (void)std::signal(SIGTERM, before);
}

TEST_F(JobOnOneFile, whenTheTrashRefusesTheOriginalStaysAndTheResultGetsTheNextName) {
    // An item that is already in the trash is not moved to the trash again.
    const NSString old =
        NSString::fromUTF8(folder.write("data/Trash/files/b.jpg", smallPicture(jpeg::encode)));
    const std::string original = trashed("b.jpg");
    run(old.object(), {makeSet(u"Web", {{u"replaceFile", true}, {u"formatType", 0}})});
    EXPECT_TRUE(trashed("b.jpg") == original);
    EXPECT_EQ(resultPaths, std::vector<std::string>{"data/Trash/files/b_1.jpg"});
}

TEST_F(JobOnOneFile, aDictionaryGivesThePathAndTheRootFolder) {
    const NSString path = NSString::fromUTF8(folder.write("p/day/one/c.jpg", smallPicture(jpeg::encode)));
    const auto job = std::make_shared<ResizeUnit>();
    job->setValueForKey(
        std::make_shared<NSDictionary>(std::map<NSString, Object>{
            {u"path", path.object()}, {u"rootPath", NSString::fromUTF8(folder / "p").object()}}),
        u"filepath");
    job->setValueForKey(path.deletingLastPathComponent().object(), u"saveFolderPath");
    job->setValueForKey(std::make_shared<NSArray>(std::vector<Object>{makeSet(u"Web")}), u"resizeSets");
    job->resize();
    EXPECT_TRUE(exists("p/Web/day/one/c.png"));
}

TEST_F(JobOnOneFile, anythingElseAsFilepathIsAnEmptyPathAndTouchesNoFile) {
    run(std::make_shared<NSNumber>(3), {makeSet(u"Web", {{u"replaceFile", true}})});
    run(nullptr, {makeSet(u"Web")});
    EXPECT_EQ(notifications, 2);
    EXPECT_TRUE(exists("p/a.jpg"));
}

TEST_F(JobOnOneFile, aSecondRunStartsAgainWithEmptySlots) {
    const auto job = std::make_shared<ResizeUnit>();
    job->setValueForKey(jpeg.object(), u"filepath");
    job->setValueForKey(NSString::fromUTF8(folder / "p").object(), u"saveFolderPath");
    job->setValueForKey(std::make_shared<NSArray>(std::vector<Object>{makeSet(u"Web")}), u"resizeSets");
    job->resize();
    job->resize();
    EXPECT_EQ(resultPaths, std::vector<std::string>{"p/Web/a_1.png"});
}

TEST_F(JobOnOneFile, theNotificationComesFromTheJob) {
    const auto job = std::make_shared<ResizeUnit>();
    job->setValueForKey(std::make_shared<NSArray>(std::vector<Object>{}), u"resizeSets");
    job->resize();
    EXPECT_EQ(notifier, job);
}

TEST_F(JobOnOneFile, aFolderThatIsNotAStringIsRefusedAndThePreviousOneStays) {
    const auto job = std::make_shared<ResizeUnit>();
    job->setValueForKey(jpeg.object(), u"filepath");
    job->setValueForKey(std::make_shared<NSArray>(std::vector<Object>{makeSet(u"Web")}), u"resizeSets");
    job->setValueForKey(NSString::fromUTF8(folder / "p").object(), u"saveFolderPath");
    EXPECT_THROW(job->setValueForKey(std::make_shared<NSNumber>(3), u"saveFolderPath"), NSException);
    job->resize();
    EXPECT_EQ(resultPaths, std::vector<std::string>{"p/Web/a.png"});
    job->setValueForKey(nullptr, u"saveFolderPath");
    job->resize();
    EXPECT_EQ(resultPaths, std::vector<std::string>{""}) << "nil clears it";
}

TEST_F(JobOnOneFile, keyValueCodingRefusesUnknownKeysAndOtherTypes) {
    ResizeUnit job;
    EXPECT_THROW(job.setValueForKey(nullptr, u"sets"), NSException);
    EXPECT_THROW(job.setValueForKey(nullptr, u"resizeSets"), NSException);
    EXPECT_THROW(
        job.setValueForKey(std::make_shared<NSArray>(std::vector<Object>{jpeg.object()}), u"resizeSets"),
        NSException);
}

TEST_F(JobOnOneFile, theNumberInANameGrowsUntilTheNameIsFree) {
    const NSString path = NSString::fromUTF8(folder / "p/x.png");
    EXPECT_EQ(ResizeUnit::uniqueFileName(path), path);
    folder.write("p/x.png", "");
    folder.write("p/x_1.png", "");
    EXPECT_EQ(ResizeUnit::uniqueFileName(path), NSString::fromUTF8(folder / "p/x_2.png"));
    folder.write("p/bare", "");
    EXPECT_EQ(ResizeUnit::uniqueFileName(NSString::fromUTF8(folder / "p/bare")),
              NSString::fromUTF8(folder / "p/bare_1."));
}

TEST_F(JobOnOneFile, aDanglingLinkCountsAsATakenName) {
    std::filesystem::create_symlink("nowhere", folder.path() / "p/link.png");
    EXPECT_EQ(ResizeUnit::uniqueFileName(NSString::fromUTF8(folder / "p/link.png")),
              NSString::fromUTF8(folder / "p/link_1.png"));
}

} // namespace kestrine
