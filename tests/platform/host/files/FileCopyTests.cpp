#include "platform/host/files/FileCopy.h"
#include "platform/host/files/FileDescriptor.h"
#include "tests/support/TemporaryFolder.h"

#include <fcntl.h>
#include <gtest/gtest.h>

namespace kestrine {
namespace {

using testing::TemporaryFolder;

constexpr std::size_t block = 256 * 1024; // what is compared at a time

Result<void> compare(const TemporaryFolder& folder, const std::string& one, const std::string& two) {
    const FileDescriptor first(::open(folder.write("first", one).c_str(), O_RDONLY | O_CLOEXEC));
    const FileDescriptor second(::open(folder.write("second", two).c_str(), O_RDONLY | O_CLOEXEC));
    return compareContents(first.number(), second.number());
}

TEST(FileCopy, filesWithTheSameBytesAreEqual) {
    const TemporaryFolder folder;
    for (const std::size_t size : {std::size_t{0}, std::size_t{1}, block - 1, block, block + 1, 2 * block})
        EXPECT_TRUE(compare(folder, std::string(size, 'x'), std::string(size, 'x'))) << size;
}

TEST(FileCopy, oneOtherByteAnywhereIsADifference) {
    const TemporaryFolder folder;
    const std::string content(2 * block + 10, 'x');
    for (const std::size_t place : {std::size_t{0}, block - 1, block, 2 * block, content.size() - 1}) {
        std::string other = content;
        other[place] = 'y';
        EXPECT_EQ(compare(folder, content, other).failure().reason, Reason::inputOutput) << place;
    }
}

TEST(FileCopy, aLongerFileIsADifference) {
    const TemporaryFolder folder;
    for (const std::size_t size : {std::size_t{0}, std::size_t{1}, block - 1, block, 2 * block}) {
        EXPECT_FALSE(compare(folder, std::string(size, 'x'), std::string(size + 1, 'x'))) << size;
        EXPECT_FALSE(compare(folder, std::string(size + 1, 'x'), std::string(size, 'x'))) << size;
    }
}

TEST(FileCopy, aFileThatCannotBeReadIsADifference) { EXPECT_FALSE(compareContents(-1, -1)); }

TEST(FileCopy, aFileThatWasReplacedMeanwhileIsNotCopied) {
    const TemporaryFolder folder;
    const FolderEntry from{AT_FDCWD, folder.write("a", "content")}, to{AT_FDCWD, folder / "copy"};
    Result<struct stat> before = statusOf(from);
    ASSERT_TRUE(before);
    folder.write("other", "content");
    std::filesystem::rename(folder / "other", folder / "a");
    EXPECT_EQ(copyRegularFile(from, to, *before).failure().reason, Reason::truncated);
}

TEST(FileCopy, aFileThatGrewMeanwhileIsNotCopied) {
    const TemporaryFolder folder;
    const FolderEntry from{AT_FDCWD, folder.write("a", "content")}, to{AT_FDCWD, folder / "copy"};
    Result<struct stat> before = statusOf(from);
    ASSERT_TRUE(before);
    folder.write("a", "content and more");
    EXPECT_EQ(copyRegularFile(from, to, *before).failure().reason, Reason::truncated);
}

} // namespace
} // namespace kestrine
