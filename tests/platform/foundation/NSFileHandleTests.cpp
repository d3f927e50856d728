#include "platform/foundation/NSFileHandle.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

namespace kestrine {
namespace {

using testing::bytesOf;
using testing::TemporaryFolder;

auto openHandle(const std::string& path) {
    return NSFileHandle::fileHandleForReadingAtPath(NSString::fromUTF8(path));
}

TEST(NSFileHandle, readingMovesTheOffset) {
    const TemporaryFolder folder;
    const auto handle = openHandle(folder.write("file", "abcdefgh"));
    ASSERT_NE(handle, nullptr);
    EXPECT_EQ(handle->offsetInFile(), 0u);
    EXPECT_EQ(handle->readDataOfLength(3), bytesOf("abc"));
    EXPECT_EQ(handle->readDataOfLength(0), Bytes());
    EXPECT_EQ(handle->readDataOfLength(2), bytesOf("de"));
    EXPECT_EQ(handle->offsetInFile(), 5u);
}

TEST(NSFileHandle, atTheEndFewerBytesAreRead) {
    const TemporaryFolder folder;
    const auto handle = openHandle(folder.write("file", "abcdefgh"));
    handle->seekToFileOffset(6);
    EXPECT_EQ(handle->readDataOfLength(SIZE_MAX), bytesOf("gh"));
    EXPECT_EQ(handle->offsetInFile(), 8u);
    EXPECT_EQ(handle->readDataOfLength(1), Bytes());
}

TEST(NSFileHandle, theOffsetMayBeBeyondTheEnd) {
    const TemporaryFolder folder;
    const auto handle = openHandle(folder.write("file", "abc"));
    for (const std::uint64_t offset : {std::uint64_t{4}, std::uint64_t{1} << 40, UINT64_MAX}) {
        handle->seekToFileOffset(offset);
        EXPECT_EQ(handle->readDataOfLength(10), Bytes());
        EXPECT_EQ(handle->offsetInFile(), offset);
    }
    handle->seekToFileOffset(1);
    EXPECT_EQ(handle->readDataOfLength(10), bytesOf("bc"));
}

TEST(NSFileHandle, aClosedHandleReadsNothing) {
    const TemporaryFolder folder;
    const auto handle = openHandle(folder.write("file", "abc"));
    handle->closeFile();
    EXPECT_EQ(handle->readDataOfLength(1), Bytes());
    handle->closeFile();
}

TEST(NSFileHandle, onlyRegularFilesAreOpened) {
    const TemporaryFolder folder;
    EXPECT_EQ(openHandle(folder / "missing"), nullptr);
    EXPECT_EQ(openHandle(folder.path().string()), nullptr);
    ASSERT_EQ(::mkfifo((folder / "pipe").c_str(), 0600), 0);
    EXPECT_EQ(openHandle(folder / "pipe"), nullptr);
    EXPECT_EQ(openHandle(""), nullptr);
}

TEST(NSFileHandle, aPathWithAZeroCharacterDoesNotExist) {
    const TemporaryFolder folder;
    EXPECT_EQ(openHandle(folder.write("file", "abc") + std::string(1, '\0')), nullptr);
}

TEST(NSFileHandle, theFileMayBeRemovedWhileItIsRead) {
    const TemporaryFolder folder;
    const auto handle = openHandle(folder.write("file", "abc"));
    std::filesystem::remove(folder / "file");
    EXPECT_EQ(handle->readDataOfLength(3), bytesOf("abc"));
}

} // namespace
} // namespace kestrine
