// ForwardReader: reads an input sequentially, byte by byte or in pieces, through a buffer.
#pragma once

#include "platform/host/files/ByteReader.h"

#include <memory>

namespace kestrine {

class ForwardReader {
public:
    /// Starts at `offset`. The buffer has `bufferBytes` bytes: a small one suits headers, a larger one suits
    /// readers of whole files.
    explicit ForwardReader(std::shared_ptr<const ByteReader> reader, std::uint64_t offset = 0,
                           std::size_t bufferBytes = 8192)
        : reader_(std::move(reader)), bufferEnd_(offset), buffer_(bufferBytes) {}

    /// The next byte, or -1 at the end of the input.
    int next() { return position_ < count_ || refill() ? buffer_[position_++] : -1; }

    /// Fills `into` and returns the number of bytes, which is smaller than its size only at the end of the
    /// input.
    std::size_t read(std::span<std::uint8_t> into);

    /// Whether read() was asked for bytes after the end of the input.
    bool endedEarly() const { return endedEarly_; }

    /// Offset of the next byte in the input.
    std::uint64_t offset() const { return bufferEnd_ - (count_ - position_); }

    /// Continues at `offset`. Cheap if it is near the current offset, before or after it.
    void moveTo(std::uint64_t offset);

private:
    std::uint64_t bufferStart() const { return bufferEnd_ - count_; }
    std::size_t readBuffered(std::span<std::uint8_t> into);
    bool refill();

    std::shared_ptr<const ByteReader> reader_;
    std::uint64_t bufferEnd_; ///< offset in the input of the byte after the buffered ones
    std::size_t position_ = 0, count_ = 0;
    bool endedEarly_ = false;
    Bytes buffer_;
};

} // namespace kestrine
