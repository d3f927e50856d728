#include "_MyClasses/Category/FileManagerUtility.h"
#include "_MyClasses/Category/FolderCommands.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

namespace kestrine {
namespace {

using testing::readFile;
using testing::TemporaryFolder;
namespace fs = std::filesystem;
using Arguments = std::vector<NSString>;

NSFileManager& manager() { return NSFileManager::defaultManager(); }
NSString text(const std::string& path) { return NSString::fromUTF8(path); }

/// The output of the programs while the steps run, standard output and error.
template <class Steps>
std::string saidDuring(Steps steps) {
    ::testing::internal::CaptureStdout();
    ::testing::internal::CaptureStderr();
    steps();
    return ::testing::internal::GetCapturedStdout() + ::testing::internal::GetCapturedStderr();
}

TEST(FolderCommands, renamingMovesToTheNewNameInTheSameFolder) {
    const FolderCommand command = renamingCommand(u"/a/b c", u"d e");
    EXPECT_EQ(command.program, NSString(u"/bin/mv"));
    EXPECT_EQ(command.arguments, (Arguments{u"/a/b c", u"/a/d e"}));
    EXPECT_EQ(renamingCommand(u"a", u"b").arguments, (Arguments{u"a", u"b"}));
    EXPECT_EQ(renamingCommand(u"/a/", u"b").arguments, (Arguments{u"/a/", u"/b"}));
}

TEST(FolderCommands, copyingKeepsPermissionsAndTimes) {
    const FolderCommand command = copyingCommand(u"/a b", u"/c");
    EXPECT_EQ(command.program, NSString(u"/bin/cp"));
    EXPECT_EQ(command.arguments, (Arguments{u"-Rp", u"/a b", u"/c"}));
}

TEST(FolderCommands, removingRemovesTheWholeTree) {
    const FolderCommand command = removingCommand(u"/a b");
    EXPECT_EQ(command.program, NSString(u"/bin/rm"));
    EXPECT_EQ(command.arguments, (Arguments{u"-R", u"/a b"}));
}

TEST(FolderCommands, unarchivingUnpacksIntoTheFolder) {
    const FolderCommand command = unarchivingCommand(u"/a.tgz", u"/b c");
    EXPECT_EQ(command.program, NSString(u"/usr/bin/tar"));
    EXPECT_EQ(command.arguments, (Arguments{u"zxvf", u"/a.tgz", u"-C", u"/b c"}));
}

TEST(FolderCommands, aMissingProgramIsIgnored) {
    EXPECT_NO_THROW(runQuietly({u"/no/such/program", {u"x"}}));
    EXPECT_NO_THROW(runQuietly({u"/bin/true", {NSString(std::u16string(u"a\0b", 3))}}));
}

TEST(FileManagerUtility, anItemGetsItsNewName) {
    const TemporaryFolder folder;
    const std::string item = folder.write("old 'name' $x.txt", "content");
    myUtility::changeFileNameOfPath(manager(), text(item), u"new\nname; \"y\".txt");
    EXPECT_FALSE(fs::exists(item));
    EXPECT_EQ(readFile(folder / "new\nname; \"y\".txt"), "content");
}

TEST(FileManagerUtility, aFolderIsCopiedWithItsContents) {
    const TemporaryFolder folder;
    folder.write("a b/c/d", "content");
    fs::permissions(folder / "a b/c/d", fs::perms(0640));
    myUtility::copyFolderAndContentsFrom(manager(), text(folder / "a b"), text(folder / "caf\xe9"));
    EXPECT_EQ(readFile(folder / "caf\xe9/c/d"), "content");
    EXPECT_EQ(fs::status(folder / "caf\xe9/c/d").permissions(), fs::perms(0640));
    EXPECT_EQ(fs::last_write_time(folder / "caf\xe9/c/d"), fs::last_write_time(folder / "a b/c/d"));
}

TEST(FileManagerUtility, aFolderIsRemovedWithItsContents) {
    const TemporaryFolder folder;
    folder.write("a b/c/d", "content");
    folder.write("a", "");
    myUtility::removeFolder(manager(), text(folder / "a b"));
    EXPECT_FALSE(fs::exists(folder / "a b"));
    EXPECT_TRUE(fs::exists(folder / "a"));
}

TEST(FileManagerUtility, failingProgramsPrintTheirOwnErrors) {
    const TemporaryFolder folder;
    const NSString missing = text(folder / "missing");
    const std::string said = saidDuring([&] {
        EXPECT_NO_THROW(myUtility::changeFileNameOfPath(manager(), missing, u"x"));
        EXPECT_NO_THROW(myUtility::copyFolderAndContentsFrom(manager(), missing, text(folder / "y")));
        EXPECT_NO_THROW(myUtility::removeFolder(manager(), missing));
    });
    EXPECT_NE(said.find("mv:"), std::string::npos);
    EXPECT_NE(said.find("cp:"), std::string::npos);
    EXPECT_NE(said.find("rm:"), std::string::npos);
    EXPECT_TRUE(fs::is_empty(folder.path()));
}

TEST(FileManagerUtility, anArchiveIsUnpackedAndItsNamesArePrinted) {
    const TemporaryFolder folder;
    folder.write("content/inside.txt", "content");
    runQuietly({u"/usr/bin/tar",
                {u"czf", text(folder / "a b.tgz"), u"-C", text(folder / "content"), u"inside.txt"}});
    fs::create_directory(folder / "out");
    const std::string said = saidDuring([&] {
        EXPECT_TRUE(myUtility::unarchiveFile(manager(), text(folder / "a b.tgz"), text(folder / "out")));
    });
    EXPECT_EQ(readFile(folder / "out/inside.txt"), "content");
    EXPECT_EQ(said, "inside.txt\n");
}

TEST(FileManagerUtility, anInvalidArchiveStillReturnsTrue) {
    const TemporaryFolder folder;
    const NSString file = text(folder.write("file", "no archive"));
    fs::create_directory(folder / "out");
    (void)saidDuring([&] { EXPECT_TRUE(myUtility::unarchiveFile(manager(), file, text(folder / "out"))); });
    EXPECT_TRUE(fs::is_empty(folder / "out"));
}

TEST(FileManagerUtility, withoutArchiveOrFolderNoProcessIsStarted) {
    const TemporaryFolder folder;
    const NSString file = text(folder.write("file", "no archive"));
    const std::string said = saidDuring([&] {
        EXPECT_FALSE(myUtility::unarchiveFile(manager(), file, text(folder / "missing")));
        EXPECT_FALSE(myUtility::unarchiveFile(manager(), text(folder / "missing"), text(folder.path())));
    });
    EXPECT_EQ(said, "") << "a program would have complained";
}

} // namespace
} // namespace kestrine
