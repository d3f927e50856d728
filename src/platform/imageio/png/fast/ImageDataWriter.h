// ImageDataWriter: the filtered rows of a PNG picture become IDAT chunks. They are cut into pieces of a fixed
// size, which several threads may compress at once; the bytes are the same with any number of threads.
#pragma once

#include "platform/imageio/png/fast/DeflatedPiece.h"

#include <deque>
#include <future>

namespace kestrine::png {

class ImageDataWriter {
public:
    /// Appends chunks to `file`, with up to `threads` threads besides the caller's; 0 for none.
    ImageDataWriter(Bytes& file, std::size_t threads) : file_(file), threads_(threads) {}

    /// Where the next `count` bytes are to be written. Valid until the next call.
    std::uint8_t* extend(std::size_t count);

    /// To be called once, behind the last byte.
    void finish();

private:
    /// Compresses what there is, here or on another thread, and begins a new piece.
    void endPiece();
    void writeOldest();
    void write(const DeflatedPiece& piece, bool isLast);

    Bytes& file_;
    const std::size_t threads_;
    Bytes piece_;
    std::deque<std::future<DeflatedPiece>> atWork_; ///< in order
    std::uint32_t adler_ = 1;
    bool isFirst_ = true;
};

} // namespace kestrine::png
