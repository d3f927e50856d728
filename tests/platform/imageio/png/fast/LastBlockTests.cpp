// The position of the last deflate block, compared with zlib.
#include "platform/imageio/png/fast/LastBlock.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <libdeflate.h>
#include <random>
#include <zlib.h>

namespace kestrine::png {
namespace {

/// The last block as zlib finds it, which stops at every block.
std::optional<LastBlock> positionByZlib(Bytes deflated) {
    z_stream stream{};
    if (inflateInit2(&stream, -MAX_WBITS) != Z_OK)
        return std::nullopt;
    Bytes inflated(1 << 16);
    stream.next_in = deflated.data();
    stream.avail_in = static_cast<uInt>(deflated.size());
    LastBlock last{};
    int status = Z_OK;
    while (last.end == 0 && status == Z_OK) {
        stream.next_out = inflated.data();
        stream.avail_out = static_cast<uInt>(inflated.size());
        status = ::inflate(&stream, Z_BLOCK);
        const std::size_t position = 8 * std::size_t{stream.total_in} - (stream.data_type & 7);
        if (status == Z_OK && (stream.data_type & 128) != 0)
            (stream.data_type & 64 ? last.end : last.begin) = position;
    }
    ::inflateEnd(&stream);
    return last.end == 0 ? std::nullopt : std::optional(last);
}

Bytes deflatedByLibdeflate(const Bytes& bytes, int level) {
    libdeflate_compressor* compressor = libdeflate_alloc_compressor(level);
    Bytes deflated(libdeflate_deflate_compress_bound(compressor, bytes.size()));
    deflated.resize(libdeflate_deflate_compress(compressor, bytes.data(), bytes.size(), deflated.data(),
                                                deflated.size()));
    libdeflate_free_compressor(compressor);
    return deflated;
}

Bytes deflatedByZlib(Bytes bytes, int strategy) {
    z_stream stream{};
    EXPECT_EQ(deflateInit2(&stream, 6, Z_DEFLATED, -MAX_WBITS, 8, strategy), Z_OK);
    Bytes deflated(deflateBound(&stream, bytes.size()));
    stream.next_in = bytes.data();
    stream.avail_in = static_cast<uInt>(bytes.size());
    stream.next_out = deflated.data();
    stream.avail_out = static_cast<uInt>(deflated.size());
    EXPECT_EQ(::deflate(&stream, Z_FINISH), Z_STREAM_END);
    deflated.resize(stream.total_out);
    ::deflateEnd(&stream);
    return deflated;
}

/// Bytes of which each differs from the one before by up to `spread`; 255 gives noise, 0 one value.
Bytes walk(std::size_t count, int spread) {
    std::mt19937 generator(static_cast<unsigned>(count) + static_cast<unsigned>(spread));
    std::uniform_int_distribution<int> step(0, spread);
    Bytes bytes(count);
    int value = 0;
    for (std::uint8_t& byte : bytes)
        byte = static_cast<std::uint8_t>(value += step(generator) - spread / 2);
    return bytes;
}

void expectAsByZlib(const Bytes& deflated) {
    const std::optional<LastBlock> expected = positionByZlib(deflated), found = lastBlockOf(deflated);
    ASSERT_TRUE(expected);
    ASSERT_TRUE(found);
    EXPECT_EQ(found->begin, expected->begin);
    EXPECT_EQ(found->end, expected->end);
}

TEST(LastBlock, isWhereZlibFindsItInDataOfEveryLevel) {
    for (const int spread : {0, 1, 5, 40, 255})
        for (const std::size_t count : {0, 1, 2, 1000, 70'000, 900'000})
            for (const int level : {0, 1, 4, 6, 9, 12}) {
                SCOPED_TRACE(std::to_string(count) + " bytes, spread " + std::to_string(spread) + ", level "
                             + std::to_string(level));
                expectAsByZlib(deflatedByLibdeflate(walk(count, spread), level));
            }
}

TEST(LastBlock, isFoundAfterFixedCodesLongCodesAndStoredBlocks) {
    Bytes steep; // frequencies that double give the longest codes
    for (unsigned symbol = 0; symbol < 18; ++symbol)
        steep.insert(steep.end(), std::size_t{1} << symbol, static_cast<std::uint8_t>(symbol * 7));
    std::ranges::shuffle(steep, std::mt19937(3));
    for (const int strategy : {Z_FIXED, Z_HUFFMAN_ONLY, Z_RLE, Z_DEFAULT_STRATEGY})
        for (const Bytes& bytes : {steep, walk(300'000, 30), walk(300'000, 255)})
            expectAsByZlib(deflatedByZlib(bytes, strategy));
}

TEST(LastBlock, isNowhereInDataThatAreCutOff) {
    const Bytes deflated = deflatedByLibdeflate(walk(5000, 9), 6);
    for (std::size_t length = 0; length < deflated.size(); ++length)
        EXPECT_FALSE(lastBlockOf(ByteView(deflated).first(length))) << length;
}

TEST(LastBlock, isFoundInDamagedDataIfZlibFindsIt) {
    std::mt19937 generator(11);
    const Bytes sound = deflatedByLibdeflate(walk(3000, 9), 6);
    int found = 0;
    for (int round = 0; round < 3000; ++round) {
        Bytes damaged = sound;
        for (int change = 0; change < 2; ++change)
            damaged[generator() % (round % 2 == 1 ? 60 : damaged.size())] ^=
                static_cast<std::uint8_t>(1U << generator() % 8);
        const std::optional<LastBlock> expected = positionByZlib(damaged), position = lastBlockOf(damaged);
        if (!expected)
            continue; // then it is enough that the walk ends
        ++found;
        ASSERT_TRUE(position) << round;
        EXPECT_EQ(position->end, expected->end);
    }
    EXPECT_GT(found, 50);
}

} // namespace
} // namespace kestrine::png
