// ImageDataChunks: the compressed pixels of a PNG file, joined from its IDAT chunks. Verifies the checksums
// of the chunks.
#pragma once

#include "platform/imageio/ForwardReader.h"

namespace kestrine::png {

class ImageDataChunks {
public:
    /// `offset` is that of the first IDAT chunk, including its length field.
    ImageDataChunks(std::shared_ptr<const ByteReader> reader, std::uint64_t offset);

    /// Fills `into` and returns the number of bytes, which is smaller than its size only after the last IDAT
    /// chunk or when a chunk is invalid.
    std::size_t read(std::span<std::uint8_t> into);

    /// Whether all chunks were read and are valid. Then end() is the offset of the next chunk.
    bool haveEnded() const { return state_ == State::ended; }
    std::uint64_t end() const { return nextChunk_; }

private:
    enum class State { inside, ended, broken };

    /// Goes to the next IDAT chunk that has content.
    void beginChunk();
    bool closeChunk();

    ForwardReader input_;
    std::uint64_t nextChunk_;
    std::uint32_t left_ = 0; ///< of the current chunk
    std::uint32_t checksum_ = 0;
    State state_ = State::inside;
};

} // namespace kestrine::png
