#include "commandline/RunLoop.h"

#include "tests/support/PresetBuilder.h"
#include "tests/support/TemporaryFolder.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

namespace kestrine {

using testing::makeSet;

namespace {

/// What `write` prints to an output.
template <class Write>
std::string written(const Write& write) {
    const testing::TemporaryFolder folder;
    const int descriptor = ::open((folder / "out").c_str(), O_CREAT | O_WRONLY, 0600);
    StandardOutput output(descriptor);
    write(output);
    ::close(descriptor);
    return testing::readFile(folder / "out");
}

NSString path(const char16_t* argument, const char16_t* PWD) {
    return *pathForArgument(argument, NSString(PWD));
}

} // namespace

TEST(RunLoop, anAbsoluteArgumentIsJoinedToTheCurrentFolderToo) {
    EXPECT_EQ(path(u"/Users/me/a.jpg", u"/tmp"), NSString(u"/tmp/Users/me/a.jpg"));
    EXPECT_EQ(path(u"a.jpg", u"/tmp/"), NSString(u"/tmp/a.jpg"));
    EXPECT_EQ(path(u"/a.jpg", u"/"), NSString(u"/a.jpg"));
}

TEST(RunLoop, anArgumentWithVolumesOrATildeAndSlashAnywhereIsUsedAsTyped) {
    EXPECT_EQ(path(u"/Volumes/Disk/a.jpg", u"/tmp"), NSString(u"/Volumes/Disk/a.jpg"));
    EXPECT_EQ(path(u"~/a.jpg", u"/tmp"), NSString(u"~/a.jpg"));
    EXPECT_EQ(path(u"x~/a.jpg", u"/tmp"), NSString(u"x~/a.jpg"));
    EXPECT_EQ(path(u"b//Volumes//c", u"/tmp"), NSString(u"b//Volumes//c"));
}

TEST(RunLoop, withoutACurrentFolderThereIsNoPathButTheLineIsPrinted) {
    EXPECT_FALSE(pathForArgument(u"a.jpg", std::nullopt).has_value());
    EXPECT_EQ(written([](StandardOutput& output) {
                  convertFiles({false, {makeSet(u"Web")}, {u"a.jpg"}}, std::nullopt, output);
              }),
              "a.jpg converting... and done!!\n");
}

TEST(RunLoop, eachFileGetsOneWholeLineEvenWhenItCannotBeConverted) {
    EXPECT_EQ(written([](StandardOutput& output) {
                  convertFiles({false, {makeSet(u"Web")}, {u"a.jpg", u"b/c.png"}},
                               NSString(u"/nowhere/at/all"), output);
              }),
              "a.jpg converting... and done!!\nb/c.png converting... and done!!\n");
}

TEST(RunLoop, aPercentSignInAnArgumentPrintsAltered) {
    EXPECT_EQ(written([](StandardOutput& output) {
                  convertFiles({false, {makeSet(u"Web")}, {u"50% off.jpg"}}, NSString(u"/nowhere"), output);
              }),
              "500ff.jpg converting... and done!!\n");
}

TEST(RunLoop, withoutFilesOrWithoutSetsNothingIsPrinted) {
    EXPECT_EQ(written([](StandardOutput& o) {
                  convertFiles({false, {makeSet(u"Web")}, {}}, NSString(u"/"), o);
              }),
              "");
    EXPECT_EQ(written([](StandardOutput& o) {
                  convertFiles({false, {}, {u"a.jpg"}}, NSString(u"/"), o);
              }),
              "");
}

TEST(RunLoop, setsAreListedOneALineWithTheirNamesAsFormatText) {
    EXPECT_EQ(written([](StandardOutput& output) {
                  listSets({makeSet(u"Web"), makeSet(u"Thumb 50%"), makeSet(u"100%% Größe")}, output);
              }),
              "Web\nThumb 50\n100% Größe\n");
}

TEST(RunLoop, aListOfAnyLengthIsComplete) {
    const ResizeSets sets(5000, makeSet(u"A set with a name of some length"));
    std::string expected;
    for (std::size_t i = 0; i < sets.size(); ++i)
        expected += "A set with a name of some length\n";
    EXPECT_EQ(written([&](StandardOutput& output) { listSets(sets, output); }), expected);
}

} // namespace kestrine
