// InflatedPixels: the filtered rows of a PNG file as one stream of bytes, through ISA-L.
// It is content with nothing but a sound stream; whatever is odd is for libpng to judge.
#pragma once

#include "platform/imageio/png/fast/ImageDataChunks.h"
#include "platform/imageio/png/fast/InflateLibrary.h"

namespace kestrine::png {

class InflatedPixels {
public:
    /// `offset` as for ImageDataChunks.
    InflatedPixels(const InflateFunctions& library, std::shared_ptr<const ByteReader> reader,
                   std::uint64_t offset);

    /// Fills all of `into`, or tells that the stream does not.
    bool read(std::span<std::uint8_t> into);

    /// Whether the stream ends here, its checksum is right, and nothing follows it in the chunks.
    bool endsHere();
    /// Where the chunk behind the pixels begins, once endsHere() was true.
    std::uint64_t endOfChunks() const { return chunks_.end(); }

private:
    /// Whether the pixels may need no more than what every inflate has: a window of 32 KiB.
    bool hasUsualHeader() const { return (compressed_[0] & 0xF0) == 0x70; }
    /// Inflates some more into the state's output; false when that cannot be.
    bool advance();

    const InflateFunctions& library_;
    ImageDataChunks chunks_;
    Bytes compressed_ = Bytes(1 << 16);
    const std::unique_ptr<inflate_state> state_ = std::make_unique<inflate_state>();
    std::uint8_t surplus_ = 0; ///< where a byte too many would go
    bool isSound_;
};

} // namespace kestrine::png
