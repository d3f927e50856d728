#include "platform/host/files/Folders.h"
#include "tests/support/IsolatedProcess.h"
#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

namespace kestrine {
namespace {

using testing::runAsOrdinaryUser;
using testing::runIsolated;
using testing::TemporaryFolder;

mode_t rightsOf(const std::string& path) {
    struct stat status {};
    EXPECT_EQ(::lstat(path.c_str(), &status), 0) << path;
    return status.st_mode & 07777;
}

TEST(Folders, aFolderIsCreatedWithTheModeThatTheUmaskAllows) {
    const TemporaryFolder folder;
    runIsolated([&] {
        ::umask(027);
        ASSERT_TRUE(makeFolder(folder / "new"));
        EXPECT_EQ(rightsOf(folder / "new"), 0750u);
    });
}

TEST(Folders, aNameInUseIsDistinguishedFromAMissingParent) {
    const TemporaryFolder folder;
    folder.write("file", "x");
    std::filesystem::create_symlink("nowhere", folder / "link");
    EXPECT_EQ(makeFolder(folder / "file").failure().reason, Reason::alreadyExists);
    EXPECT_EQ(makeFolder(folder / "link").failure().reason, Reason::alreadyExists);
    EXPECT_EQ(makeFolder(folder / "a/b").failure().reason, Reason::notFound);
    EXPECT_EQ(makeFolder("").failure().reason, Reason::malformed);
    EXPECT_EQ(makeFolder(folder / std::string(256, 'n')).failure().reason, Reason::tooLarge);
}

TEST(Folders, withoutPermissionNoFolderIsCreated) {
    const TemporaryFolder folder;
    ::chmod(folder.path().c_str(), 0555);
    runAsOrdinaryUser([&] { EXPECT_EQ(makeFolder(folder / "new").failure().reason, Reason::notPermitted); });
    ::chmod(folder.path().c_str(), 0700);
}

TEST(Folders, privateFoldersAreCreatedOnEveryLevelForTheUserOnly) {
    const TemporaryFolder folder;
    ::chmod(folder.path().c_str(), 0755);
    ASSERT_TRUE(makePrivateFolders(folder / "a/b/c"));
    for (const char* made : {"a", "a/b", "a/b/c"})
        EXPECT_EQ(rightsOf(folder / made), 0700u) << made;
    EXPECT_EQ(rightsOf(folder / ""), 0755u);
    EXPECT_TRUE(makePrivateFolders(folder / "a/b/c")) << "they exist already";
    EXPECT_TRUE(makePrivateFolders(folder / "a//d/")) << "additional slashes are ignored";
}

TEST(Folders, aPrivateFolderThatCannotHaveItsNameFailsAlsoBelowANewFolder) {
    const TemporaryFolder folder;
    EXPECT_EQ(makePrivateFolders(folder / "new/" + std::string(256, 'n')).failure().reason, Reason::tooLarge);
}

TEST(Folders, privateFoldersCannotBeCreatedInAFile) {
    const TemporaryFolder folder;
    folder.write("file", "x");
    EXPECT_EQ(makePrivateFolders(folder / "file/a").failure().reason, Reason::notFound);
}

TEST(Folders, listingReturnsEachNameOnceAndCanBeRepeated) {
    const TemporaryFolder folder;
    for (const char* name : {"a", ".hidden", "n\nl", "\xFF\xFE"})
        folder.write(name, "x");
    Result<FileDescriptor> opened = openFolder(folder / "");
    ASSERT_TRUE(opened);
    for (int time = 0; time < 2; ++time)
        EXPECT_THAT(*namesIn(opened->number()),
                    ::testing::UnorderedElementsAre("a", ".hidden", "n\nl", "\xFF\xFE"));
}

TEST(Folders, aLinkToAFolderIsOpenedAsAPathButNotAsASubfolder) {
    const TemporaryFolder folder;
    ASSERT_TRUE(makeFolder(folder / "real"));
    std::filesystem::create_directory_symlink("real", folder / "link");
    Result<FileDescriptor> opened = openFolder(folder / "");
    ASSERT_TRUE(opened);
    EXPECT_TRUE(openFolder(folder / "link"));
    EXPECT_FALSE(openSubfolder({opened->number(), "link"}));
    EXPECT_TRUE(openSubfolder({opened->number(), "real"}));
}

TEST(Folders, anUnreadableFolderCanBeOpenedButNotListed) {
    const TemporaryFolder folder;
    ASSERT_TRUE(makeFolder(folder / "blind"));
    ::chmod(folder.path().c_str(), 0755);
    ::chmod((folder / "blind").c_str(), 0333);
    runAsOrdinaryUser([&] {
        Result<FileDescriptor> opened = openFolder(folder / "blind");
        ASSERT_TRUE(opened);
        EXPECT_EQ(namesIn(opened->number()).failure().reason, Reason::notPermitted);
    });
    ::chmod((folder / "blind").c_str(), 0700);
}

} // namespace
} // namespace kestrine
