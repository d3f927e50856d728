#include "platform/host/files/MemoryFile.h"

#include "platform/host/files/ByteReader.h"

#include <gtest/gtest.h>
#include <unistd.h>

namespace kestrine {
namespace {

TEST(MemoryFile, holdsWhatWasWrittenAtAnyOffset) {
    const MemoryFile file = *MemoryFile::create();
    ASSERT_TRUE(file.write(Bytes{1, 2, 3}, 0));
    ASSERT_TRUE(file.write(Bytes{9, 8}, 2));
    EXPECT_EQ(*file.read(0, 4), (Bytes{1, 2, 9, 8}));
    EXPECT_EQ(*file.read(3, 1), Bytes{8});
    EXPECT_EQ(*file.read(0, 0), Bytes());
}

TEST(MemoryFile, thatEndsBeforeTheBytesThatAreReadIsAFailure) {
    const MemoryFile file = *MemoryFile::create();
    ASSERT_TRUE(file.write(Bytes{1, 2, 3}, 0));
    EXPECT_EQ(file.read(1, 3).failure().reason, Reason::truncated);
    file.clear();
    EXPECT_EQ(file.read(0, 1).failure().reason, Reason::truncated);
}

TEST(MemoryFile, isSharedThroughItsDescriptor) {
    const MemoryFile file = *MemoryFile::create();
    const MemoryFile other{FileDescriptor(::dup(file.number()))};
    ASSERT_TRUE(other.write(Bytes{5}, 0));
    EXPECT_EQ(*file.read(0, 1), Bytes{5});
}

TEST(ByteReader, ofAnOpenFileReadsAsMuchAsItIsToldAndGivesItsDescriptor) {
    const MemoryFile file = *MemoryFile::create();
    ASSERT_TRUE(file.write(Bytes{1, 2, 3}, 0));
    const int number = ::dup(file.number());
    const auto reader = readerOfFile(FileDescriptor(number), 3);
    EXPECT_EQ(reader->size(), 3u);
    EXPECT_EQ(*reader->readAll(10), (Bytes{1, 2, 3}));
    EXPECT_EQ(reader->descriptor(), number);
    EXPECT_EQ(readerOfBytes({1})->descriptor(), -1);
}

} // namespace
} // namespace kestrine
