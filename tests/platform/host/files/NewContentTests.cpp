// Content in a nameless file, and how it becomes a file with a name.
#include "platform/host/files/NewContent.h"

#include "platform/host/files/AtomicFile.h"
#include "platform/host/files/FileSink.h"
#include "tests/support/IsolatedProcess.h"
#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <sys/mount.h>
#include <sys/stat.h>

namespace kestrine {
namespace {

using testing::bytesOf;
using ::testing::ElementsAre;
using testing::readFile;
using testing::TemporaryFolder;

/// A nameless file for `folder` with this text, written in two pieces.
NewContent contentInFile(const std::string& folder, const std::string& text, mode_t mode = 0666) {
    NamelessFile file = *NamelessFile::createFor(folder, mode);
    FileSink sink(file.descriptor());
    EXPECT_TRUE(sink.write(bytesOf(text.substr(0, 2))) && sink.write(bytesOf(text.substr(2))));
    return *NewContent::of(std::move(file));
}

struct stat statusOf(const std::string& path) {
    struct stat status {};
    EXPECT_EQ(::stat(path.c_str(), &status), 0) << path;
    return status;
}

ino_t numberOf(const NewContent& content) {
    struct stat status {};
    EXPECT_EQ(::fstat(content.file()->descriptor(), &status), 0);
    return status.st_ino;
}

std::vector<std::string> namesIn(const std::filesystem::path& folder) {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder))
        names.push_back(entry.path().filename().string());
    return names;
}

CandidatePaths only(const std::string& path) {
    return [path](unsigned) { return path; };
}

TEST(NewContent, hasTheSameSizeDigestAndBytesInMemoryAndInAFile) {
    const TemporaryFolder folder;
    const std::string text(600'000, 'x'); // more than one block
    const Bytes bytes = bytesOf(text);
    const NewContent inFile = contentInFile(folder.path(), text), inMemory = bytes;
    for (const NewContent* content : {&inFile, &inMemory}) {
        EXPECT_EQ(content->size(), text.size());
        EXPECT_EQ(*content->digest(), digestOf(text));
        const std::string path = folder / (content == &inFile ? "file" : "memory");
        ASSERT_TRUE(writeFile(path, *content, Overwrite::no, Durability::cached));
        EXPECT_EQ(readFile(path), text);
    }
}

TEST(NewContent, inAFileIsPublishedWithoutBeingWrittenAgain) {
    const TemporaryFolder folder;
    for (const Durability durability : {Durability::cached, Durability::synced}) {
        const NewContent content = contentInFile(folder.path(), "content");
        const std::string path = folder / (durability == Durability::synced ? "synced" : "cached");
        EXPECT_EQ(*publishNewFile(only(path), content, durability), path);
        EXPECT_EQ(statusOf(path).st_ino, numberOf(content));
        EXPECT_EQ(readFile(path), "content");
    }
}

TEST(NewContent, inAFileIsStagedAndReplacesWithoutBeingWrittenAgain) {
    const TemporaryFolder folder;
    const NewContent staged = contentInFile(folder.path(), "staged");
    {
        Result<StagedFile> file = StagedFile::write(folder.path(), staged);
        EXPECT_TRUE(file->publish(only(folder / "a")));
    }
    EXPECT_EQ(statusOf(folder / "a").st_ino, numberOf(staged));
    ASSERT_EQ(::chmod((folder / "a").c_str(), 0604), 0);
    const NewContent replacing = contentInFile(folder.path(), "replacing");
    ASSERT_TRUE(replaceFile(folder / "a", replacing));
    EXPECT_EQ(statusOf(folder / "a").st_ino, numberOf(replacing));
    EXPECT_EQ(statusOf(folder / "a").st_mode & 07777, 0604u);
    EXPECT_EQ(readFile(folder / "a"), "replacing");
    EXPECT_THAT(namesIn(folder.path()), ElementsAre("a"));
}

TEST(NewContent, ofAFileThatIsNotPublishedLeavesNothing) {
    const TemporaryFolder folder;
    folder.write("a", "old");
    {
        const NewContent content = contentInFile(folder.path(), "content");
        EXPECT_EQ(publishNewFile(only(folder / "a"), content, Durability::cached).failure().reason,
                  Reason::alreadyExists);
        EXPECT_TRUE(StagedFile::write(folder.path(), content));
    }
    EXPECT_THAT(namesIn(folder.path()), ElementsAre("a"));
    EXPECT_EQ(readFile(folder / "a"), "old");
}

TEST(NewContent, canBeMadeForAFolderThatDoesNotExistYet) {
    const TemporaryFolder folder;
    const NewContent content = contentInFile(folder / "new/inner", "content");
    EXPECT_THAT(namesIn(folder.path()), ElementsAre());
    std::filesystem::create_directories(folder / "new/inner");
    ASSERT_TRUE(publishNewFile(only(folder / "new/inner/a"), content, Durability::cached));
    EXPECT_EQ(statusOf(folder / "new/inner/a").st_ino, numberOf(content));
}

TEST(NewContent, inAFileHasTheModeThatTheUmaskAllowsUnlessThereAreRights) {
    const TemporaryFolder folder;
    testing::runIsolated([&] {
        ::umask(027);
        const NewContent usual = contentInFile(folder.path(), "usual"),
                         given = contentInFile(folder.path(), "given", 0600);
        ASSERT_TRUE(publishNewFile(only(folder / "usual"), usual, Durability::cached));
        EXPECT_EQ(statusOf(folder / "usual").st_mode & 07777, 0640u);
        const FileRights rights{0604, ::getuid(), ::getgid()};
        ASSERT_TRUE(publishNewFile(only(folder / "given"), given, Durability::cached, rights));
        EXPECT_EQ(statusOf(folder / "given").st_mode & 07777, 0604u);
    });
}

TEST(NewContent, inAFileThatReplacesIsForTheUserOnlyUntilItHasItsRights) {
    const TemporaryFolder folder;
    ASSERT_TRUE(replaceFile(folder / "a", contentInFile(folder.path(), "new")));
    EXPECT_EQ(statusOf(folder / "a").st_mode & 07777, 0600u) << "there are no rights for a new file";
    EXPECT_EQ(readFile(folder / "a"), "new");
}

TEST(NewContent, inAFileOfAnotherFileSystemIsCopied) {
    const TemporaryFolder folder;
    testing::runWithOwnMounts([&] {
        testing::mountFileSystem(folder / "disk", 1024);
        const NewContent content = contentInFile(folder.path(), "content");
        ASSERT_TRUE(publishNewFile(only(folder / "disk/a"), content, Durability::synced));
        ASSERT_TRUE(StagedFile::write(folder / "disk", content)->publish(only(folder / "disk/b")));
        ASSERT_TRUE(replaceFile(folder / "disk/b", content));
        for (const char* name : {"disk/a", "disk/b"})
            EXPECT_EQ(readFile(folder / name), "content") << name;
        EXPECT_EQ(namesIn(folder / "disk").size(), 2u);
    });
}

TEST(NewContent, inAFileIsCopiedWhereProcIsMissing) {
    const TemporaryFolder folder;
    testing::runWithOwnMounts([&] {
        const NewContent content = contentInFile(folder.path(), "content");
        ASSERT_EQ(::mount("tmpfs", "/proc", "tmpfs", 0, nullptr), 0);
        ASSERT_TRUE(publishNewFile(only(folder / "a"), content, Durability::cached));
        EXPECT_EQ(readFile(folder / "a"), "content");
        EXPECT_THAT(namesIn(folder.path()), ElementsAre("a"));
    });
}

} // namespace
} // namespace kestrine
