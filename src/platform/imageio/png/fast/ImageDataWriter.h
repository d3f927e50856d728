// ImageDataWriter: writes the rows of a PNG picture as IDAT chunks. The rows are split into pieces of about
// the same size, which several threads can compress at once. The bytes do not depend on the number of
// threads.
#pragma once

#include "platform/host/ByteSink.h"
#include "platform/imageio/png/fast/DeflatedPiece.h"

#include <deque>
#include <functional>
#include <future>

namespace kestrine::png {

class ImageDataWriter {
public:
    /// Compresses a piece; see deflatePiece(). Any thread.
    using Compressor = std::function<DeflatedPiece(ByteView bytes, bool isLast)>;

    /// Writes chunks to `file`, which must outlive this. Up to `threads` further threads compress; with 0
    /// only the caller's.
    ImageDataWriter(ByteSink& file, std::size_t threads, Compressor compress)
        : file_(file), threads_(threads), compress_(std::move(compress)) {}

    /// Returns where to write the next `count` bytes, which come into the same piece. Valid until the next
    /// call.
    std::uint8_t* extend(std::size_t count);

    /// Must be called once, after the last byte. Fails if any chunk could not be written.
    Result<void> finish();

private:
    /// Compresses the current piece, on this or another thread, and begins a new one.
    void endPiece();
    void writeOldest();
    void write(const DeflatedPiece& piece, bool isLast);

    ByteSink& file_;
    Result<void> written_; ///< the first failure; nothing is written after it
    const std::size_t threads_;
    const Compressor compress_;
    Bytes piece_;
    std::deque<std::future<DeflatedPiece>> atWork_; ///< in order
    std::uint32_t adler_ = 1;
    bool isFirst_ = true;
};

} // namespace kestrine::png
