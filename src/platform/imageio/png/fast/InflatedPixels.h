// InflatedPixels: the filtered rows of a PNG file as one stream of bytes, inflated by ISA-L.
// Accepts only streams without any error or peculiarity; libpng decides about all others.
#pragma once

#include "platform/imageio/png/fast/ImageDataChunks.h"
#include "platform/imageio/png/fast/InflateLibrary.h"

namespace kestrine::png {

class InflatedPixels {
public:
    /// `offset` is that of the first IDAT chunk. `library` must outlive this.
    InflatedPixels(const InflateFunctions& library, std::shared_ptr<const ByteReader> reader,
                   std::uint64_t offset);

    /// Fills `into` completely; returns false when the stream ends before or is invalid.
    bool read(std::span<std::uint8_t> into);

    /// Whether the stream ends here, its checksum is correct, and no bytes follow it in the chunks.
    bool endsHere();
    /// Offset of the chunk after the pixels. Valid once endsHere() has returned true.
    std::uint64_t endOfChunks() const { return chunks_.end(); }

private:
    /// Whether the header names a window of 32 KiB. Streams with smaller windows are left to libpng.
    bool hasUsualHeader() const { return (compressed_[0] & 0xF0) == 0x70; }
    /// Inflates more bytes into the output of the state; returns false when that is not possible.
    bool advance();

    const InflateFunctions& library_;
    ImageDataChunks chunks_;
    Bytes compressed_ = Bytes(1 << 16);
    const std::unique_ptr<inflate_state> state_ = std::make_unique<inflate_state>();
    std::uint8_t surplus_ = 0; ///< receives a byte after the expected end
    bool isSound_;
};

} // namespace kestrine::png
