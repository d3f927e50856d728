#include "platform/host/files/FileContent.h"
#include "platform/host/files/FileDescriptor.h"
#include "tests/support/IsolatedProcess.h"
#include "tests/support/TemporaryFolder.h"

#include <csignal>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

namespace kestrine {
namespace {

using testing::bytesOf;
using testing::readFile;
using testing::runIsolated;
using testing::TemporaryFolder;

TEST(FileContent, aSmallFileIsReadCompletely) {
    const TemporaryFolder folder;
    const std::string text("a\0b", 3);
    EXPECT_EQ(*readSmallFile(folder.write("a", text), 3), bytesOf(text));
    EXPECT_TRUE(readSmallFile(folder.write("empty", ""), 0)->empty());
}

TEST(FileContent, aFileAboveTheLimitIsNotRead) {
    const TemporaryFolder folder;
    EXPECT_EQ(readSmallFile(folder.write("a", "1234"), 3).failure().reason, Reason::tooLarge);
}

TEST(FileContent, onlyRegularFilesAreRead) {
    const TemporaryFolder folder;
    ASSERT_EQ(::mkfifo((folder / "pipe").c_str(), 0600), 0);
    EXPECT_EQ(readSmallFile(folder / "pipe", 10).failure().reason, Reason::notRegularFile);
    EXPECT_EQ(readSmallFile("/dev/zero", 10).failure().reason, Reason::notRegularFile);
    EXPECT_EQ(readSmallFile(folder / "", 10).failure().reason, Reason::notRegularFile);
    EXPECT_EQ(readSmallFile(folder / "none", 10).failure().reason, Reason::notFound);
}

TEST(FileContent, aPathWithAZeroByteIsNotCutThere) {
    const TemporaryFolder folder;
    const std::string path = folder.write("a", "x") + std::string("\0b", 2);
    EXPECT_EQ(readSmallFile(path, 10).failure().reason, Reason::malformed);
    EXPECT_EQ(removeFile(path).failure().reason, Reason::malformed);
    EXPECT_EQ(readFile(folder / "a"), "x");
}

TEST(FileContent, writingContinuesAtTheDescriptorsPosition) {
    const TemporaryFolder folder;
    const FileDescriptor file(::open((folder / "a").c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600));
    ASSERT_TRUE(writeAll(file.number(), bytesOf("one ")) && writeAll(file.number(), bytesOf("two")));
    ASSERT_TRUE(writeAll(file.number(), {}));
    ASSERT_TRUE(finishWriting(file.number(), Durability::synced));
    EXPECT_EQ(readFile(folder / "a"), "one two");
}

TEST(FileContent, writingWaitsForANonBlockingPipe) {
    int ends[2];
    ASSERT_EQ(::pipe2(ends, O_CLOEXEC), 0);
    FileDescriptor reading(ends[0]), writing(ends[1]);
    ASSERT_EQ(::fcntl(writing.number(), F_SETFL, O_NONBLOCK), 0);
    const Bytes content(1'000'000, 'x'); // more than a pipe holds
    std::size_t arrived = 0;
    std::jthread reader([&] {
        char part[4096];
        for (ssize_t got = 0; (got = ::read(reading.number(), part, sizeof part)) > 0;)
            arrived += static_cast<std::size_t>(got);
    });
    EXPECT_TRUE(writeAll(writing.number(), content));
    EXPECT_TRUE(writing.close());
    reader.join();
    EXPECT_EQ(arrived, content.size());
}

TEST(FileContent, aFullDeviceIsNoSpace) {
    const FileDescriptor file(::open("/dev/full", O_WRONLY | O_CLOEXEC));
    if (::access("/dev/full", W_OK) != 0)
        GTEST_SKIP() << "this system has no /dev/full";
    EXPECT_EQ(writeAll(file.number(), bytesOf("x")).failure().reason, Reason::noSpace);
}

TEST(FileContent, contentAboveTheSizeLimitOfTheProcessIsTooLarge) {
    const TemporaryFolder folder;
    runIsolated([&] {
        (void)std::signal(SIGXFSZ, SIG_IGN);
        const rlimit limit{100, 100};
        ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &limit), 0);
        const FileDescriptor file(::open((folder / "a").c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600));
        EXPECT_EQ(writeAll(file.number(), Bytes(1000)).failure().reason, Reason::tooLarge);
    });
}

TEST(FileContent, finishingAClosedFileFails) {
    EXPECT_FALSE(finishWriting(-1, Durability::cached));
    EXPECT_FALSE(finishWriting(-1, Durability::synced));
}

TEST(FileContent, aFolderThatCannotBeSyncedCountsAsSynced) {
    const FileDescriptor folder(::open("/", O_PATH | O_DIRECTORY | O_CLOEXEC));
    EXPECT_TRUE(syncFolder(folder.number()));
}

TEST(FileContent, filesAndLinksAreRemovedButFoldersAreNot) {
    const TemporaryFolder folder;
    folder.write("target", "x");
    std::filesystem::create_symlink("target", folder / "link");
    EXPECT_TRUE(removeFile(folder / "link"));
    EXPECT_EQ(readFile(folder / "target"), "x");
    EXPECT_EQ(removeFile(folder / "link").failure().reason, Reason::notFound);
    EXPECT_FALSE(removeFile(folder / ""));
}

} // namespace
} // namespace kestrine
