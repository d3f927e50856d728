#include "platform/imageio/png/fast/DeflatedPiece.h"

#include "platform/imageio/Zlib.h"

#include <libdeflate.h>
#include <memory>
#include <new>

namespace kestrine::png {

namespace {

struct CompressorDeleter {
    void operator()(libdeflate_compressor* compressor) const { libdeflate_free_compressor(compressor); }
};

struct LastBlock {
    std::size_t begin = 0, end = 0; ///< in bits
};

/// The position of the last deflate block. libdeflate does not report it, so zlib inflates the data and stops
/// at every block.
LastBlock findLastBlock(Bytes& deflated) {
    constexpr int noHeader = -MAX_WBITS, unusedBits = 7, inLastBlock = 64, atBoundary = 128;
    InflateStream stream(noHeader);
    if (!stream.isReady())
        throw std::bad_alloc();
    Bytes inflated(1 << 16); // not used
    stream->next_in = deflated.data();
    stream->avail_in = static_cast<uInt>(deflated.size());
    LastBlock last;
    while (last.end == 0) {
        stream->next_out = inflated.data();
        stream->avail_out = static_cast<uInt>(inflated.size());
        if (stream.inflate(Z_BLOCK) != Z_OK)
            throw std::bad_alloc(); // no other error is possible in data that was just compressed
        if ((stream->data_type & atBoundary) == 0)
            continue;
        const std::size_t position = 8 * std::size_t{stream->total_in} - (stream->data_type & unusedBits);
        (stream->data_type & inLastBlock ? last.end : last.begin) = position;
    }
    return last;
}

/// Clears the final flag of the last block, and ends the data at a whole byte with an empty stored block, so
/// that more blocks can follow.
void openEnd(Bytes& deflated) {
    constexpr std::size_t blockHeadBits = 3;
    const LastBlock last = findLastBlock(deflated);
    deflated[last.begin / 8] &= static_cast<std::uint8_t>(~(1U << last.begin % 8));
    if (8 * deflated.size() - last.end < blockHeadBits)
        deflated.push_back(0);
    deflated.insert(deflated.end(), {0x00, 0x00, 0xFF, 0xFF}); // the length 0 and its complement
}

} // namespace

DeflatedPiece deflatePiece(ByteView bytes, bool isLast, int compression) {
    const std::unique_ptr<libdeflate_compressor, CompressorDeleter> compressor(
        libdeflate_alloc_compressor(compression));
    if (!compressor)
        throw std::bad_alloc();
    DeflatedPiece piece{.adler = libdeflate_adler32(1, bytes.data(), bytes.size()), .length = bytes.size()};
    piece.deflated.resize(libdeflate_deflate_compress_bound(compressor.get(), bytes.size()));
    piece.deflated.resize(libdeflate_deflate_compress(compressor.get(), bytes.data(), bytes.size(),
                                                      piece.deflated.data(), piece.deflated.size()));
    if (!isLast)
        openEnd(piece.deflated);
    return piece;
}

std::uint32_t joinedAdler(std::uint32_t first, std::uint32_t second, std::size_t length) {
    return static_cast<std::uint32_t>(
        installedZlib()->combineAdler32(first, second, static_cast<z_off_t>(length)));
}

} // namespace kestrine::png
