#include "platform/imageio/ForwardReader.h"

#include <gtest/gtest.h>
#include <random>

namespace kestrine::testing {

namespace {

constexpr std::size_t length = 50'000;

std::uint8_t byteAt(std::uint64_t offset) { return static_cast<std::uint8_t>(offset * 7 + offset / 256); }

std::shared_ptr<const ByteReader> input() {
    Bytes bytes(length);
    for (std::size_t i = 0; i < length; ++i)
        bytes[i] = byteAt(i);
    return readerOfBytes(std::move(bytes));
}

} // namespace

TEST(ForwardReader, everyByteIsReadOnceAndInOrder) {
    ForwardReader reader(input());
    for (std::size_t i = 0; i < length; ++i) {
        ASSERT_EQ(reader.offset(), i);
        ASSERT_EQ(reader.next(), byteAt(i));
    }
    EXPECT_EQ(reader.next(), -1);
    EXPECT_EQ(reader.next(), -1);
    EXPECT_EQ(reader.offset(), length);
}

TEST(ForwardReader, movesFromAnyPositionToAnyOther) {
    std::mt19937 random(1);
    ForwardReader reader(input(), 123);
    for (int i = 0; i < 3000; ++i) {
        const std::size_t from =
            i % 2 == 0 ? random() % length : std::min(reader.offset() + random() % 300, length - 1);
        reader.moveTo(from);
        ASSERT_EQ(reader.offset(), from);
        Bytes bytes(random() % (i % 5 == 0 ? 20'000 : 40));
        const std::size_t got = reader.read(bytes);
        ASSERT_EQ(got, std::min(bytes.size(), length - from));
        for (std::size_t k = 0; k < got; ++k)
            ASSERT_EQ(bytes[k], byteAt(from + k));
    }
}

TEST(ForwardReader, beyondTheEndNothingIsRead) {
    ForwardReader reader(input());
    Bytes bytes(5);
    for (const std::uint64_t offset :
         {std::uint64_t{length}, std::uint64_t{length + 5}, std::uint64_t{1} << 60}) {
        reader.moveTo(offset);
        EXPECT_EQ(reader.offset(), offset);
        EXPECT_EQ(reader.next(), -1);
        EXPECT_EQ(reader.read(bytes), 0u);
    }
    reader.moveTo(length - 2);
    EXPECT_EQ(reader.read(bytes), 2u);
}

} // namespace kestrine::testing
