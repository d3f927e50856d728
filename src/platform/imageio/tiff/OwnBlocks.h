// OwnBlocks: decodes strips and tiles with our own decompression, which is faster than libtiff's.
// A block is refused or decoded exactly as libtiff does, so that no picture depends on the decoder: whatever
// is not regular is refused, and libtiff then decodes the block or decides that it cannot be decoded.
#pragma once

#include "platform/imageio/tiff/Inflater.h"
#include "platform/imageio/tiff/LZW.h"
#include "platform/imageio/tiff/Page.h"

#include <variant>

namespace kestrine::tiff {

/// Only one thread may use it at a time. Holds the compressed bytes of one strip or tile.
class OwnBlocks {
public:
    /// Null for pages that are left to libtiff: all but those with LZW or deflate, bits from the highest one
    /// down, and either no predictor or differences of samples of 8 or 16 bits. `file` is at `page` and must
    /// outlive the result.
    static std::unique_ptr<OwnBlocks> create(const File& file, const Page& page);

    /// Decodes the strip or tile of this number, which has rows of `rowBytes`, into `block`, which has the
    /// size of all its rows. Samples are in the machine's byte order. Returns false, with any content of
    /// `block`, when libtiff must decode it.
    bool decode(std::uint32_t index, std::size_t rowBytes, std::span<std::uint8_t> block);

private:
    OwnBlocks(const File& file, const Page& page);

    bool readCompressed(std::uint32_t index, std::size_t decodedBytes);
    void swapSamples(std::span<std::uint8_t> block) const;

    const File& file_;
    const std::size_t samplesPerPixel_; ///< in a block
    const std::size_t bytesPerSample_;  ///< 0 if samples are not whole bytes
    const bool areDifferences_;
    const bool isSwapped_; ///< whether the file is in the other byte order
    std::variant<LZWDecoder, Inflater> decompressor_;
    Bytes compressed_;
};

} // namespace kestrine::tiff
