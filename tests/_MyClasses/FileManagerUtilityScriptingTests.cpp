#include "_MyClasses/Category/FileManagerUtilityScripting.h"
#include "platform/finder/FinderPath.h"
#include "platform/finder/Volumes.h"
#include "tests/support/FinderPlace.h"
#include "tests/support/ScriptError.h"

#include <gtest/gtest.h>

namespace kestrine {
namespace {

using testing::errorNumberIn;
using testing::errorTextIn;
using testing::readFile;
namespace fs = std::filesystem;

NSString text(const std::string& path) { return NSString::fromUTF8(path); }

class FinderScriptingTest : public ::testing::Test {
protected:
    const testing::FinderPlace place_;
    const std::string folder_ = place_.makeFolder("folder");
};

TEST_F(FinderScriptingTest, theFinderPathOfAMissingItemIsEmpty) {
    fs::create_symlink("nowhere", place_ / "link");
    for (const std::string& path : {place_ / "missing", place_ / "link", std::string()})
        EXPECT_EQ(convertPathType(text(path)), NSString()) << path;
}

TEST_F(FinderScriptingTest, onlyTheFinderPathOfAFolderEndsWithAColon) {
    const std::string file = place_.write("folder/a b.txt");
    EXPECT_EQ(convertPathType(text(folder_)), *finderPathOf(folder_) + u":");
    EXPECT_EQ(convertPathType(text(file)), *finderPathOf(file));
    EXPECT_EQ(convertPathType(text(file)), *finderPathOf(folder_) + u":a b.txt");
}

TEST_F(FinderScriptingTest, theFinderPathBeginsWithTheVolume) {
    EXPECT_EQ(convertPathType(u"/"), mountedVolumes()->front().name + u":");
}

TEST_F(FinderScriptingTest, theFinderPathOfALinkIsThatOfItsTarget) {
    const std::string file = place_.write("a.txt");
    fs::create_symlink(file, place_ / "link");
    EXPECT_EQ(convertPathType(text(place_ / "link")), convertPathType(text(file)));
}

TEST_F(FinderScriptingTest, aFinderPathLeadsBackToTheFile) {
    for (const char* name : {"a:b", "caf\xe9", "line\nfeed", "日本語", "\"quoted\"", "%@", "\x01"}) {
        const std::string file = place_.write(name);
        const Result<std::string> found = pathOfFinderPath(convertPathType(text(file)));
        ASSERT_TRUE(found) << name;
        EXPECT_EQ(*found, file);
    }
}

TEST_F(FinderScriptingTest, theListHasQuotedPathsAndOneComma) {
    const NSString first = text(place_.write("a")), second = text(folder_);
    EXPECT_EQ(pathListStringForScript({first, second}),
              NSString(u"\"") + convertPathType(first) + u"\",\"" + convertPathType(second) + u"\"");
    EXPECT_EQ(pathListStringForScript({text(place_ / "missing")}), NSString(u"\"\""));
}

TEST_F(FinderScriptingTest, emptyArgumentsDoNothing) {
    const NSString file = text(place_.write("a")), folder = text(folder_);
    EXPECT_EQ(ASTrashFiles({}), nullptr);
    EXPECT_EQ(ASTrashFile(u""), nullptr);
    EXPECT_EQ(ASCopyFilesToFolder({}, u"", false), nullptr) << "a script would complain of the folder";
    EXPECT_EQ(ASMoveFilesToFolder({}, u"", true), nullptr);
    EXPECT_EQ(ASMoveFileToFolder(u"", folder, true), nullptr);
    EXPECT_EQ(ASMoveFileToFolder(file, u"", true), nullptr);
    EXPECT_TRUE(fs::exists(place_ / "a"));
}

TEST_F(FinderScriptingTest, filesAndFoldersGoToTheTrash) {
    const NSString file = text(place_.write("a")), line = text(place_.write("line\nfeed"));
    place_.write("folder/inside");
    EXPECT_EQ(ASTrashFiles({file, text(folder_), line}), nullptr);
    for (const char* name : {"a", "folder/inside", "line\nfeed"})
        EXPECT_TRUE(fs::exists(place_.trashed(name))) << name;
    EXPECT_FALSE(fs::exists(place_ / "a") || fs::exists(folder_));
}

TEST_F(FinderScriptingTest, oneItemGoesToTheTrash) {
    EXPECT_EQ(ASTrashFile(text(place_.write("caf\xe9"))), nullptr);
    EXPECT_EQ(ASTrashFile(text(folder_)), nullptr);
    EXPECT_TRUE(fs::exists(place_.trashed("caf\xe9")));
    EXPECT_TRUE(fs::exists(place_.trashed("folder")));
}

TEST_F(FinderScriptingTest, copiesReplaceOnlyOnRequest) {
    const NSString file = text(place_.write("a", "new"));
    EXPECT_EQ(ASCopyFilesToFolder({file}, text(folder_), false), nullptr);
    EXPECT_EQ(readFile(folder_ + "/a"), "new");
    place_.write("folder/a", "old");
    EXPECT_LT(errorNumberIn(ASCopyFilesToFolder({file}, text(folder_), false)), 0);
    EXPECT_EQ(readFile(folder_ + "/a"), "old");
    EXPECT_EQ(ASCopyFilesToFolder({file}, text(folder_), true), nullptr);
    EXPECT_EQ(readFile(folder_ + "/a"), "new");
    EXPECT_EQ(readFile(place_ / "a"), "new");
}

TEST_F(FinderScriptingTest, movesReplaceOnlyOnRequest) {
    const NSString one = text(place_.write("a", "new")), other = text(place_.write("b", "new"));
    place_.write("folder/a", "old");
    place_.write("folder/b", "old");
    EXPECT_LT(errorNumberIn(ASMoveFileToFolder(one, text(folder_), false)), 0);
    EXPECT_LT(errorNumberIn(ASMoveFilesToFolder({other}, text(folder_), false)), 0);
    EXPECT_EQ(readFile(folder_ + "/a") + readFile(folder_ + "/b"), "oldold");
    EXPECT_EQ(ASMoveFileToFolder(one, text(folder_), true), nullptr);
    EXPECT_EQ(ASMoveFilesToFolder({other}, text(folder_), true), nullptr);
    EXPECT_EQ(readFile(folder_ + "/a") + readFile(folder_ + "/b"), "newnew");
    EXPECT_FALSE(fs::exists(place_ / "a") || fs::exists(place_ / "b"));
}

TEST_F(FinderScriptingTest, aMissingItemIsTheFindersErrorAndNothingIsDone) {
    const NSString file = text(place_.write("a")), missing = text(place_ / "missing");
    for (const ScriptErrorInformation& error :
         {ASTrashFiles({file, missing}), ASTrashFile(missing),
          ASCopyFilesToFolder({missing}, text(folder_), true), ASMoveFileToFolder(file, missing, true),
          ASMoveFilesToFolder({file}, missing, false)}) {
        EXPECT_EQ(errorNumberIn(error), cannotGetObject);
        EXPECT_EQ(errorTextIn(error, NSAppleScriptErrorBriefMessage), NSString(u"Can’t get “”."));
    }
    EXPECT_TRUE(fs::exists(place_ / "a"));
    EXPECT_TRUE(fs::is_empty(folder_));
}

/// Names that would change the meaning of a script.
const char* const misleadingNames[] = {
    "a\",\"a",         // two items of a list
    "a\",\"System",    // the start-up volume
    "a\"}\n end tell", // the end of the script
    "a\\",             // an escaped quote
    "\"",              // nothing but a quote
    "b\" to \"c",      // a destination
};

TEST_F(FinderScriptingTest, aQuoteOrBackslashInANameRunsNothing) {
    place_.write("a");
    place_.write("b");
    for (const char* name : misleadingNames) {
        const NSString file = text(place_.write(name));
        for (const ScriptErrorInformation& error :
             {ASTrashFiles({file}), ASTrashFiles({text(place_ / "a"), file}), ASTrashFile(file),
              ASCopyFilesToFolder({file}, text(folder_), true), ASMoveFileToFolder(file, text(folder_), true),
              ASMoveFilesToFolder({file}, text(folder_), true)}) {
            EXPECT_EQ(errorNumberIn(error), scriptSyntaxError) << name;
            EXPECT_TRUE(errorTextIn(error, NSAppleScriptErrorMessage)) << name;
        }
        EXPECT_EQ(readFile(place_ / name), "content");
        EXPECT_TRUE(fs::exists(place_ / "a") && fs::exists(place_ / "b"));
    }
    EXPECT_TRUE(fs::is_empty(folder_));
}

TEST_F(FinderScriptingTest, aQuoteOrBackslashInAParentOrTheDestinationRunsNothing) {
    for (const char* name : misleadingNames) {
        const std::string inside = place_.write(std::string(name) + "/inside");
        const NSString file = text(place_.write("a"));
        EXPECT_EQ(errorNumberIn(ASTrashFile(text(inside))), scriptSyntaxError) << name;
        EXPECT_EQ(errorNumberIn(ASTrashFiles({text(inside)})), scriptSyntaxError) << name;
        EXPECT_EQ(errorNumberIn(ASMoveFileToFolder(file, text(place_ / name), true)), scriptSyntaxError);
        EXPECT_EQ(errorNumberIn(ASCopyFilesToFolder({file}, text(place_ / name), true)), scriptSyntaxError);
        EXPECT_TRUE(fs::exists(inside) && fs::exists(place_ / "a"));
    }
}

TEST_F(FinderScriptingTest, theErrorsRangeCoversTheMisleadingPath) {
    const NSString file = text(place_.write("a\"b"));
    const ScriptErrorInformation error = ASTrashFile(file);
    const NSString source =
        NSString(u"tell application \"Finder\"\n delete file \"") + convertPathType(file) + u"\"\n end tell";
    EXPECT_EQ(testing::errorPlaceIn(error, source), convertPathType(file));
}

TEST_F(FinderScriptingTest, itemsMoveBetweenVolumes) {
    if (!fs::is_directory("/dev/shm"))
        GTEST_SKIP() << "there is no second file system";
    const testing::TemporaryFolder elsewhere("/dev/shm");
    const NSString file = text(elsewhere.write("a", "content")), other = text(place_.write("b"));
    EXPECT_EQ(ASMoveFilesToFolder({file, other}, text(folder_), false), nullptr);
    EXPECT_EQ(readFile(folder_ + "/a") + readFile(folder_ + "/b"), "contentcontent");
    EXPECT_FALSE(fs::exists(elsewhere / "a") || fs::exists(place_ / "b"));
    EXPECT_EQ(ASCopyFilesToFolder({text(folder_)}, text(elsewhere.path()), false), nullptr);
    EXPECT_EQ(readFile(elsewhere / "folder/b"), "content");
}

} // namespace
} // namespace kestrine
