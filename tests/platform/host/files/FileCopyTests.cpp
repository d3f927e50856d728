#include "platform/host/files/FileCopy.h"
#include "platform/host/files/FileDescriptor.h"
#include "tests/support/TemporaryFolder.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

bool copiesAreDamaged = false;

} // namespace

/// Replaces the function of the C library in the test program: while `copiesAreDamaged` is set, reading from
/// a file that is also open for writing (a copy) gives a wrong byte.
extern "C" ssize_t pread(int file, void* into, size_t size, off_t offset) {
    const auto count = static_cast<ssize_t>(::syscall(SYS_pread64, file, into, size, offset));
    if (copiesAreDamaged && count > 0 && (::fcntl(file, F_GETFL) & O_ACCMODE) == O_RDWR)
        static_cast<char*>(into)[count - 1] ^= 1;
    return count;
}

namespace kestrine {
namespace {

using testing::TemporaryFolder;

constexpr std::size_t block = 256 * 1024; // the block size of the comparison

Result<void> compare(const TemporaryFolder& folder, const std::string& one, const std::string& two) {
    const FileDescriptor first(::open(folder.write("first", one).c_str(), O_RDONLY | O_CLOEXEC));
    const FileDescriptor second(::open(folder.write("second", two).c_str(), O_RDONLY | O_CLOEXEC));
    return compareContents(first.number(), second.number());
}

TEST(FileCopy, filesWithEqualContentAreEqual) {
    const TemporaryFolder folder;
    for (const std::size_t size : {std::size_t{0}, std::size_t{1}, block - 1, block, block + 1, 2 * block})
        EXPECT_TRUE(compare(folder, std::string(size, 'x'), std::string(size, 'x'))) << size;
}

TEST(FileCopy, aDifferenceInAnyByteIsFound) {
    const TemporaryFolder folder;
    const std::string content(2 * block + 10, 'x');
    for (const std::size_t place : {std::size_t{0}, block - 1, block, 2 * block, content.size() - 1}) {
        std::string other = content;
        other[place] = 'y';
        EXPECT_EQ(compare(folder, content, other).failure().reason, Reason::inputOutput) << place;
    }
}

TEST(FileCopy, aDifferenceInLengthIsFound) {
    const TemporaryFolder folder;
    for (const std::size_t size : {std::size_t{0}, std::size_t{1}, block - 1, block, 2 * block}) {
        EXPECT_FALSE(compare(folder, std::string(size, 'x'), std::string(size + 1, 'x'))) << size;
        EXPECT_FALSE(compare(folder, std::string(size + 1, 'x'), std::string(size, 'x'))) << size;
    }
}

TEST(FileCopy, aFileThatCannotBeReadFailsTheComparison) { EXPECT_FALSE(compareContents(-1, -1)); }

TEST(FileCopy, aCopyThatTheDiskHasDamagedFails) {
    const TemporaryFolder folder;
    const FolderEntry from{AT_FDCWD, folder.write("a", "content")}, to{AT_FDCWD, folder / "copy"};
    const Result<struct stat> status = statusOf(from);
    ASSERT_TRUE(status);
    copiesAreDamaged = true;
    const Result<void> copied = copyRegularFile(from, to, *status);
    copiesAreDamaged = false;
    ASSERT_FALSE(copied);
    EXPECT_EQ(copied.failure().reason, Reason::inputOutput);
}

TEST(FileCopy, aFileThatWasReplacedIsNotCopied) {
    const TemporaryFolder folder;
    const FolderEntry from{AT_FDCWD, folder.write("a", "content")}, to{AT_FDCWD, folder / "copy"};
    Result<struct stat> before = statusOf(from);
    ASSERT_TRUE(before);
    folder.write("other", "content");
    std::filesystem::rename(folder / "other", folder / "a");
    EXPECT_EQ(copyRegularFile(from, to, *before).failure().reason, Reason::truncated);
}

TEST(FileCopy, aFileThatHasGrownIsNotCopied) {
    const TemporaryFolder folder;
    const FolderEntry from{AT_FDCWD, folder.write("a", "content")}, to{AT_FDCWD, folder / "copy"};
    Result<struct stat> before = statusOf(from);
    ASSERT_TRUE(before);
    folder.write("a", "content and more");
    EXPECT_EQ(copyRegularFile(from, to, *before).failure().reason, Reason::truncated);
}

} // namespace
} // namespace kestrine
