#include "platform/appkit/NSAppleScript.h"
#include "platform/finder/FinderPath.h"
#include "tests/support/FinderPlace.h"
#include "tests/support/ScriptError.h"

#include <gtest/gtest.h>

namespace kestrine {
namespace {

using testing::errorNumberIn;
using testing::errorPlaceIn;
using testing::errorTextIn;
using testing::readFile;
namespace fs = std::filesystem;

/// The Finder path of an item in double quotes.
NSString quoted(const std::string& path) {
    const Result<NSString> finderPath = finderPathOf(path);
    EXPECT_TRUE(finderPath) << path;
    return NSString(u"\"") + (finderPath ? *finderPath : NSString()) + u"\"";
}

NSString telling(const NSString& command) {
    return NSString(u"tell application \"Finder\"\n ") + command + u"\n end tell";
}

ScriptErrorInformation run(const NSString& source) {
    ScriptErrorInformation error;
    const bool ran = NSAppleScript::initWithSource(source).executeAndReturnError(error);
    EXPECT_EQ(ran, error == nullptr);
    return error;
}

class NSAppleScriptTest : public ::testing::Test {
protected:
    const testing::FinderPlace place_;
};

TEST_F(NSAppleScriptTest, deletingMovesEveryItemOfTheListToTheTrash) {
    const std::string file = place_.write("a.txt");
    const std::string inFolder = place_.write("folder/b.txt");
    EXPECT_FALSE(
        run(telling(NSString(u"delete {") + quoted(file) + u"," + quoted(place_ / "folder") + u"}")));
    EXPECT_FALSE(fs::exists(file));
    EXPECT_TRUE(fs::exists(place_.trashed("a.txt")));
    EXPECT_TRUE(fs::exists(place_.trashed("folder/b.txt")));
}

TEST_F(NSAppleScriptTest, aFileIsDeleted) {
    const std::string file = place_.write("a.txt");
    EXPECT_FALSE(run(telling(NSString(u"delete file ") + quoted(file))));
    EXPECT_TRUE(fs::exists(place_.trashed("a.txt")));
}

TEST_F(NSAppleScriptTest, theWordFileAlsoAcceptsAFolder) {
    const std::string folder = place_.makeFolder("folder");
    EXPECT_FALSE(run(telling(NSString(u"delete file ") + quoted(folder))));
    EXPECT_TRUE(fs::is_directory(place_.trashed("folder")));
}

TEST_F(NSAppleScriptTest, duplicatingLeavesTheOriginals) {
    const std::string file = place_.write("a.txt");
    const std::string folder = place_.makeFolder("folder");
    EXPECT_FALSE(run(telling(NSString(u"duplicate {") + quoted(file) + u"} to " + quoted(folder)
                             + u" without replacing")));
    EXPECT_EQ(readFile(file), "content");
    EXPECT_EQ(readFile(folder + "/a.txt"), "content");
}

TEST_F(NSAppleScriptTest, movingTakesAListOrAFile) {
    const std::string folder = place_.makeFolder("folder");
    const NSString listed = quoted(place_.write("a")), single = quoted(place_.write("b"));
    EXPECT_FALSE(
        run(telling(NSString(u"move {") + listed + u"} to " + quoted(folder) + u" without replacing")));
    EXPECT_FALSE(
        run(telling(NSString(u"move file ") + single + u" to " + quoted(folder) + u" without replacing")));
    EXPECT_FALSE(fs::exists(place_ / "a") || fs::exists(place_ / "b"));
    EXPECT_TRUE(fs::exists(folder + "/a") && fs::exists(folder + "/b"));
}

TEST_F(NSAppleScriptTest, anExistingItemIsReplacedOnlyWithReplacing) {
    const std::string file = place_.write("a.txt", "new");
    const std::string folder = place_.makeFolder("folder");
    place_.write("folder/a.txt", "old");
    const NSString move = NSString(u"move {") + quoted(file) + u"} to " + quoted(folder);
    EXPECT_NE(errorNumberIn(run(telling(move + u" without replacing"))), 0);
    EXPECT_EQ(readFile(file), "new");
    EXPECT_EQ(readFile(folder + "/a.txt"), "old");
    EXPECT_FALSE(run(telling(move + u" with replacing")));
    EXPECT_EQ(readFile(folder + "/a.txt"), "new");
}

TEST_F(NSAppleScriptTest, anItemThatTheFinderCannotFindIsReportedByItsRange) {
    const std::string file = place_.write("a.txt");
    const NSString source = telling(NSString(u"delete {") + quoted(file) + u",\"No such disk:x\"}");
    const ScriptErrorInformation error = run(source);
    EXPECT_EQ(errorNumberIn(error), cannotGetObject);
    EXPECT_EQ(errorPlaceIn(error, source), NSString(u"\"No such disk:x\""));
    EXPECT_EQ(errorTextIn(error, NSAppleScriptErrorAppName), NSString(u"Finder"));
    EXPECT_EQ(errorTextIn(error, NSAppleScriptErrorBriefMessage), NSString(u"Can’t get “No such disk:x”."));
    EXPECT_EQ(errorTextIn(error, NSAppleScriptErrorMessage),
              NSString(u"Finder got an error: Can’t get “No such disk:x”."));
    EXPECT_TRUE(fs::exists(file)) << "all items are looked up first";
}

TEST_F(NSAppleScriptTest, theEmptyPathIsNotFound) {
    const std::string file = place_.write("a.txt");
    for (const NSString& command :
         {NSString(u"delete {\"\"}"), NSString(u"delete file \"\""),
          NSString(u"move file ") + quoted(file) + u" to \"\" with replacing",
          NSString(u"duplicate {\"\"} to " + quoted(place_.makeFolder("folder")).utf16()
                   + u" with replacing")}) {
        const ScriptErrorInformation error = run(telling(command));
        EXPECT_EQ(errorNumberIn(error), cannotGetObject) << command.utf8();
        EXPECT_EQ(errorPlaceIn(error, telling(command)), NSString(u"\"\""));
    }
    EXPECT_TRUE(fs::exists(file));
}

TEST_F(NSAppleScriptTest, aFailedCommandIsReportedByItsWholeRange) {
    const NSString file = quoted(place_.write("a.txt")), notAFolder = quoted(place_.write("b.txt", "old"));
    const NSString command = NSString(u"move {") + file + u"} to " + notAFolder + u" with replacing";
    const ScriptErrorInformation error = run(telling(command));
    EXPECT_LT(errorNumberIn(error), 0);
    EXPECT_EQ(errorPlaceIn(error, telling(command)), command);
    EXPECT_EQ(errorTextIn(error, NSAppleScriptErrorAppName), NSString(u"Finder"));
    EXPECT_EQ(readFile(place_ / "b.txt"), "old");
}

TEST_F(NSAppleScriptTest, anInvalidScriptDoesNothing) {
    const std::string file = place_.write("a.txt");
    const NSString source = telling(NSString(u"delete {") + quoted(file) + u"} now");
    const ScriptErrorInformation error = run(source);
    EXPECT_EQ(errorNumberIn(error), scriptSyntaxError);
    EXPECT_EQ(errorPlaceIn(error, source), NSString(u"now"));
    EXPECT_EQ(errorTextIn(error, NSAppleScriptErrorMessage),
              errorTextIn(error, NSAppleScriptErrorBriefMessage));
    EXPECT_FALSE(errorTextIn(error, NSAppleScriptErrorAppName)) << "the Finder was not called";
    EXPECT_TRUE(fs::exists(file));
}

TEST_F(NSAppleScriptTest, successDoesNotChangeTheErrorInformation) {
    const ScriptErrorInformation before = errorInformation({-1, u"before", {}});
    ScriptErrorInformation error = before;
    const NSString source = telling(NSString(u"delete file ") + quoted(place_.write("a.txt")));
    EXPECT_TRUE(NSAppleScript::initWithSource(source).executeAndReturnError(error));
    EXPECT_EQ(error, before);
}

TEST_F(NSAppleScriptTest, namesOfAnyBytesAreFound) {
    for (const char* name : {"line\nfeed", "caf\xe9", "a:b", "tab\t{}, to", "日本語", "-rf", "%@"}) {
        const std::string file = place_.write(name);
        EXPECT_FALSE(run(telling(NSString(u"delete file ") + quoted(file)))) << name;
        EXPECT_TRUE(fs::exists(place_.trashed(name))) << name;
    }
}

} // namespace
} // namespace kestrine
