#include "platform/imageio/png/fast/DeflatedPiece.h"

#include "platform/imageio/png/fast/LastBlock.h"

#include <libdeflate.h>
#include <memory>
#include <new>
#include <stdexcept>

namespace kestrine::png {

namespace {

struct CompressorDeleter {
    void operator()(libdeflate_compressor* compressor) const { libdeflate_free_compressor(compressor); }
};

/// Clears the final flag of the last block, and ends the data at a whole byte with an empty stored block, so
/// that more blocks can follow.
void openEnd(Bytes& deflated) {
    constexpr std::size_t blockHeadBits = 3;
    const std::optional<LastBlock> last = lastBlockOf(deflated);
    if (!last)
        throw std::logic_error("data that were just compressed are not deflate data");
    deflated[last->begin / 8] &= static_cast<std::uint8_t>(~(1U << last->begin % 8));
    if (8 * deflated.size() - last->end < blockHeadBits)
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

// RFC 1950: the low half is 1 and the sum of the bytes, the high half the sum of the low halves after each
// byte.
std::uint32_t joinedAdler(std::uint32_t first, std::uint32_t second, std::size_t length) {
    constexpr std::uint64_t base = 65521;
    const std::uint64_t firstSum = first & 0xFFFF, secondSum = second & 0xFFFF;
    const std::uint64_t sum = (firstSum + secondSum + base - 1) % base;
    const std::uint64_t sumOfSums =
        ((first >> 16) + (second >> 16) + length % base * ((firstSum + base - 1) % base)) % base;
    return static_cast<std::uint32_t>(sumOfSums << 16 | sum);
}

} // namespace kestrine::png
