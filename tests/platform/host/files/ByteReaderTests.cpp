#include "platform/host/files/ByteReader.h"
#include "tests/support/TemporaryFolder.h"

#include <fcntl.h>
#include <gtest/gtest.h>

namespace kestrine {
namespace {

using testing::bytesOf;
using testing::TemporaryFolder;

/// The bytes that the reader gives from `offset` on, for a buffer of `size` bytes.
std::string readFrom(const ByteReader& reader, std::uint64_t offset, std::size_t size) {
    Bytes buffer(size);
    buffer.resize(reader.readAt(offset, buffer));
    return {buffer.begin(), buffer.end()};
}

TEST(ByteReader, anyPartOfTheInputIsRead) {
    const TemporaryFolder folder;
    const auto file = readerOfPath(folder.write("a", "abcdef"));
    ASSERT_TRUE(file);
    for (const auto& reader : {*file, readerOfBytes(bytesOf("abcdef"))}) {
        EXPECT_EQ(reader->size(), 6u);
        EXPECT_EQ(readFrom(*reader, 0, 6), "abcdef");
        EXPECT_EQ(readFrom(*reader, 2, 3), "cde");
        EXPECT_EQ(readFrom(*reader, 4, 9), "ef");
        EXPECT_EQ(readFrom(*reader, 5, 0), "");
    }
}

TEST(ByteReader, beyondTheEndNothingIsRead) {
    const TemporaryFolder folder;
    const auto file = readerOfPath(folder.write("a", "abcdef"));
    ASSERT_TRUE(file);
    for (const auto& reader : {*file, readerOfBytes(bytesOf("abcdef"))})
        for (const std::uint64_t offset : {std::uint64_t{6}, std::uint64_t{7}, std::uint64_t{1} << 40})
            EXPECT_EQ(readFrom(*reader, offset, 4), "") << offset;
}

TEST(ByteReader, allBytesAreReadUpToTheLimit) {
    EXPECT_EQ(*readerOfBytes(bytesOf("abc"))->readAll(3), bytesOf("abc"));
    EXPECT_EQ(readerOfBytes(bytesOf("abc"))->readAll(2).failure().reason, Reason::tooLarge);
    EXPECT_TRUE(readerOfBytes({})->readAll(0)->empty());
}

TEST(ByteReader, aFileThatHasBecomeShorterIsTruncated) {
    const TemporaryFolder folder;
    const auto reader = readerOfPath(folder.write("a", "abcdef"));
    ASSERT_TRUE(reader);
    std::filesystem::resize_file(folder / "a", 3);
    EXPECT_EQ((*reader)->size(), 6u);
    EXPECT_EQ((*reader)->readAll(100).failure().reason, Reason::truncated);
}

TEST(ByteReader, aFileIsReadAfterItsRemoval) {
    const TemporaryFolder folder;
    const auto reader = readerOfPath(folder.write("a", "abc"));
    ASSERT_TRUE(reader);
    std::filesystem::remove(folder / "a");
    EXPECT_EQ(*(*reader)->readAll(3), bytesOf("abc"));
}

TEST(ByteReader, anErrorOfTheSystemIsNotTakenForTheEnd) {
    const TemporaryFolder folder;
    const auto reader = readerOfFile(FileDescriptor(::open(folder.write("a", "abc").c_str(), O_WRONLY)));
    ASSERT_TRUE(reader);
    EXPECT_FALSE((*reader)->failure());
    EXPECT_EQ(readFrom(**reader, 5, 1), "");
    EXPECT_FALSE((*reader)->failure()) << "beyond the end";
    EXPECT_EQ(readFrom(**reader, 0, 3), "");
    ASSERT_TRUE((*reader)->failure());
    EXPECT_EQ((*reader)->failure()->text, "cannot read the file: Bad file descriptor");
    EXPECT_EQ((*reader)->readAll(3).failure().reason, Reason::inputOutput);
}

TEST(ByteReader, onlyRegularFilesCanBeRead) {
    const TemporaryFolder folder;
    EXPECT_EQ(readerOfPath(folder.path()).failure().reason, Reason::notRegularFile);
    EXPECT_EQ(readerOfPath(folder / "missing").failure().reason, Reason::notFound);
    EXPECT_FALSE(readerOfFile(FileDescriptor()));
}

} // namespace
} // namespace kestrine
