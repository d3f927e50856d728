#include "platform/imageio/png/ChunkSearch.h"
#include "tests/platform/imageio/png/PNGRecipe.h"

#include <gtest/gtest.h>

namespace kestrine::testing {

namespace {

using png::SearchEnd;

/// Counts how often a file is read.
class CountedReads final : public ByteReader {
public:
    explicit CountedReads(Bytes bytes) : bytes_(readerOfBytes(std::move(bytes))) {}

    std::uint64_t size() const override { return bytes_->size(); }
    std::size_t readAt(std::uint64_t offset, std::span<std::uint8_t> into) const override {
        ++count;
        return bytes_->readAt(offset, into);
    }

    mutable int count = 0;

private:
    const std::shared_ptr<const ByteReader> bytes_;
};

struct NamedChunk {
    std::string_view type;
    Bytes content;
};

/// Only chunks, without a signature.
Bytes chunks(const std::vector<NamedChunk>& list) {
    Bytes bytes;
    for (const NamedChunk& chunk : list)
        addChunk(bytes, chunk.type, chunk.content);
    return bytes;
}

/// The content of the first chunk of type "aaaa"; nullopt if there is none.
std::optional<Bytes> foundIn(Bytes bytes, SearchEnd end = SearchEnd::atPixels) {
    const auto reader = readerOfBytes(std::move(bytes));
    const auto [chunk, none] = png::findChunks(*reader, {"aaaa", "zzzz"}, 0, end);
    EXPECT_FALSE(none.has_value());
    return chunk ? std::optional(png::contentOf(*reader, chunk)) : std::nullopt;
}

const Bytes one = {1}, two = {2, 2};
constexpr std::size_t mostBytes = 1 << 20;

} // namespace

TEST(PNGChunkSearch, oneWalkFindsAllTypes) {
    const CountedReads reader(
        chunks({{"IHDR", {}}, {"bbbb", one}, {"cccc", {}}, {"aaaa", two}, {"IDAT", {}}}));
    const auto [a, b, none] = png::findChunks(reader, {"aaaa", "bbbb", "dddd"}, 0, SearchEnd::atPixels);
    EXPECT_EQ(reader.count, 5);
    EXPECT_EQ(png::contentOf(reader, a), two);
    EXPECT_EQ(png::contentOf(reader, b), one);
    EXPECT_FALSE(none.has_value());
    EXPECT_TRUE(png::contentOf(reader, none).empty());
}

TEST(PNGChunkSearch, theWalkEndsWhenAllAreFound) {
    const CountedReads reader(chunks({{"bbbb", {}}, {"aaaa", {}}, {"cccc", {}}, {"IDAT", {}}}));
    (void)png::findChunks(reader, {"aaaa", "bbbb"}, 0, SearchEnd::atPixels);
    EXPECT_EQ(reader.count, 2);
}

TEST(PNGChunkSearch, theFirstChunkOfATypeIsFoundEvenIfItIsEmpty) {
    EXPECT_EQ(foundIn(chunks({{"aaaa", one}, {"aaaa", two}})), one);
    EXPECT_EQ(foundIn(chunks({{"aaaa", {}}, {"aaaa", two}})), Bytes());
}

TEST(PNGChunkSearch, theWalkEndsAtThePixelsOrAtTheEnd) {
    const Bytes late = chunks({{"IDAT", {}}, {"aaaa", one}}), after = chunks({{"IEND", {}}, {"aaaa", one}});
    EXPECT_FALSE(foundIn(late, SearchEnd::atPixels).has_value());
    EXPECT_EQ(foundIn(late, SearchEnd::atLastChunk), one);
    EXPECT_FALSE(foundIn(after, SearchEnd::atLastChunk).has_value());
}

TEST(PNGChunkSearch, aChunkOfMoreThanOneMiBIsPassedOver) {
    EXPECT_EQ(foundIn(chunks({{"aaaa", Bytes(mostBytes)}, {"aaaa", one}})), Bytes(mostBytes));
    EXPECT_EQ(foundIn(chunks({{"aaaa", Bytes(mostBytes + 1)}, {"aaaa", one}})), one);
}

TEST(PNGChunkSearch, aChunkWhoseContentIsCutOffIsNotFound) {
    Bytes file = chunks({{"aaaa", two}});
    constexpr std::size_t checksumBytes = 4;
    file.resize(file.size() - checksumBytes);
    EXPECT_EQ(foundIn(file), two);
    file.pop_back();
    EXPECT_FALSE(foundIn(file).has_value());
}

TEST(PNGChunkSearch, aChunkOfAnotherSizeCountsAsEmpty) {
    const auto reader = readerOfBytes(chunks({{"aaaa", two}}));
    const auto [chunk] = png::findChunks(*reader, {"aaaa"}, 0, SearchEnd::atPixels);
    EXPECT_EQ(png::contentOfSize(2, *reader, chunk), two);
    EXPECT_TRUE(png::contentOfSize(1, *reader, chunk).empty());
    EXPECT_TRUE(png::contentOfSize(3, *reader, chunk).empty());
    EXPECT_TRUE(png::contentOfSize(2, *reader, std::nullopt).empty());
}

} // namespace kestrine::testing
