#include "platform/imageio/PartReader.h"

#include <gtest/gtest.h>

namespace kestrine::testing {

namespace {

/// Up to eight bytes from `offset` on.
Bytes bytesAt(const ByteReader& reader, std::uint64_t offset) {
    Bytes bytes(8);
    bytes.resize(reader.readAt(offset, bytes));
    return bytes;
}

} // namespace

TEST(PartReader, showsOnlyThePart) {
    const auto part = readerOfPart(readerOfBytes({0, 1, 2, 3, 4, 5, 6}), 2, 3);
    EXPECT_EQ(part->size(), 3u);
    EXPECT_EQ(bytesAt(*part, 0), (Bytes{2, 3, 4}));
    EXPECT_EQ(bytesAt(*part, 2), (Bytes{4}));
    EXPECT_EQ(bytesAt(*part, 3), Bytes{});
    EXPECT_EQ(bytesAt(*part, ~std::uint64_t{0}), Bytes{});
}

TEST(PartReader, endsWhereTheWholeEnds) {
    const auto whole = readerOfBytes({0, 1, 2, 3});
    EXPECT_EQ(bytesAt(*readerOfPart(whole, 2, 100), 0), (Bytes{2, 3}));
    EXPECT_EQ(bytesAt(*readerFrom(whole, 1), 0), (Bytes{1, 2, 3}));
    EXPECT_EQ(readerOfPart(whole, 9, 9)->size(), 0u);
}

} // namespace kestrine::testing
