#include "platform/imageio/png/fast/ImageDataWriter.h"

#include "platform/host/BigEndian.h"
#include "platform/imageio/png/fast/Chunk.h"

#include <array>
#include <system_error>
#include <utility>

namespace kestrine::png {

namespace {

/// Joining takes a quarter more time for each piece except the last one, and costs hardly any bytes. A
/// picture of one megapixel should still have work for two threads.
constexpr std::size_t pieceBytes = std::size_t{2} << 20;

constexpr std::array<std::uint8_t, 2> streamHeader = {
    0x78, 0x5E}; // deflate with a window of 32 KiB, fast compression

} // namespace

std::uint8_t* ImageDataWriter::extend(std::size_t count) {
    if (piece_.size() >= pieceBytes)
        endPiece();
    if (piece_.empty())
        piece_.reserve(pieceBytes + count);
    piece_.resize(piece_.size() + count);
    return piece_.data() + piece_.size() - count;
}

Result<void> ImageDataWriter::finish() {
    const DeflatedPiece last = compress_(piece_, true);
    while (!atWork_.empty())
        writeOldest();
    write(last, true);
    return written_;
}

void ImageDataWriter::endPiece() {
    const auto bytes = std::make_shared<const Bytes>(std::exchange(piece_, {}));
    while (!atWork_.empty() && atWork_.size() >= threads_)
        writeOldest();
    if (threads_ > 0) {
        try {
            atWork_.push_back(
                std::async(std::launch::async, [this, bytes] { return compress_(*bytes, false); }));
            return;
        } catch (const std::system_error&) {
            while (!atWork_.empty()) // no thread could be started
                writeOldest();
        }
    }
    write(compress_(*bytes, false), false);
}

void ImageDataWriter::writeOldest() {
    write(atWork_.front().get(), false);
    atWork_.pop_front();
}

void ImageDataWriter::write(const DeflatedPiece& piece, bool isLast) {
    adler_ = joinedAdler(adler_, piece.adler, piece.length);
    Bytes end;
    if (isLast)
        appendBigEndian(end, adler_, 4);
    Bytes chunk;
    appendChunk("IDAT", {isFirst_ ? ByteView(streamHeader) : ByteView(), piece.deflated, end}, chunk);
    if (written_)
        written_ = file_.write(chunk);
    isFirst_ = false;
}

} // namespace kestrine::png
