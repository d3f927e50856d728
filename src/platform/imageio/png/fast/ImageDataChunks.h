// ImageDataChunks: the compressed pixels of a PNG file, gathered from its IDAT chunks, whose checksums are
// verified.
#pragma once

#include "platform/imageio/ForwardReader.h"

namespace kestrine::png {

class ImageDataChunks {
public:
    /// `offset` is where the first IDAT chunk begins, with its length.
    ImageDataChunks(std::shared_ptr<const ByteReader> reader, std::uint64_t offset);

    /// Fills `into` and returns how many bytes there were: fewer than asked only when no IDAT chunk follows
    /// or something is wrong.
    std::size_t read(std::span<std::uint8_t> into);

    /// Whether all of it was read, and all was well. Then `end()` is where the next chunk begins.
    bool haveEnded() const { return state_ == State::ended; }
    std::uint64_t end() const { return nextChunk_; }

private:
    enum class State { inside, ended, broken };

    /// Goes to the next chunk that has content.
    void beginChunk();
    bool closeChunk();

    ForwardReader input_;
    std::uint64_t nextChunk_;
    std::uint32_t left_ = 0; ///< of the current chunk
    std::uint32_t checksum_ = 0;
    State state_ = State::inside;
};

} // namespace kestrine::png
