// ForwardReader: reads an input from one place on, byte after byte, for formats that come in no larger units.
#pragma once

#include "platform/host/files/ByteReader.h"

#include <memory>

namespace kestrine {

class ForwardReader {
public:
    /// Reads ahead by up to `bufferBytes`: few for headers, more where all of a large file is read.
    explicit ForwardReader(std::shared_ptr<const ByteReader> reader, std::uint64_t offset = 0,
                           std::size_t bufferBytes = 8192)
        : reader_(std::move(reader)), bufferEnd_(offset), buffer_(bufferBytes) {}

    /// The next byte, or -1 at the end of the input.
    int next() { return position_ < count_ || refill() ? buffer_[position_++] : -1; }

    /// Fills `into` and returns how many bytes there were: fewer than asked only at the end.
    std::size_t read(std::span<std::uint8_t> into);

    /// Whether read() was asked for more than there is.
    bool endedEarly() const { return endedEarly_; }

    /// Where in the input the next byte stands.
    std::uint64_t offset() const { return bufferEnd_ - (count_ - position_); }

    /// Goes on at `offset`; cheap for a place nearby, ahead or behind.
    void moveTo(std::uint64_t offset);

private:
    std::uint64_t bufferStart() const { return bufferEnd_ - count_; }
    std::size_t readBuffered(std::span<std::uint8_t> into);
    bool refill();

    std::shared_ptr<const ByteReader> reader_;
    std::uint64_t bufferEnd_; ///< where in the input the byte behind the buffered ones stands
    std::size_t position_ = 0, count_ = 0;
    bool endedEarly_ = false;
    Bytes buffer_;
};

} // namespace kestrine
