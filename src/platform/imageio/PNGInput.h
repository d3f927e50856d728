// PNGInput: a PNG file read from one place on, in pieces of 64 KiB.
#pragma once

#include "platform/host/ByteReader.h"

namespace kestrine {

class PNGInput {
public:
    explicit PNGInput(std::shared_ptr<const ByteReader> reader, std::uint64_t offset = 0)
        : reader_(std::move(reader)), position_(offset) {}

    /// Fills `into`, or tells that the input is too short.
    bool read(std::uint8_t* into, std::size_t count);
    /// Where in the input the next byte stands.
    std::uint64_t offset() const { return position_ - (end_ - begin_); }
    /// Whether more was wanted than there is.
    bool endedEarly() const { return endedEarly_; }

private:
    bool refill();

    const std::shared_ptr<const ByteReader> reader_;
    std::uint64_t position_; ///< of the piece's end in the input
    Bytes piece_ = Bytes(1 << 16);
    std::size_t begin_ = 0, end_ = 0; ///< what is left of the piece
    bool endedEarly_ = false;
};

} // namespace kestrine
