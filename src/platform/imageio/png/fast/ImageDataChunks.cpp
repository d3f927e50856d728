#include "platform/imageio/png/fast/ImageDataChunks.h"

#include "platform/host/BigEndian.h"
#include "platform/imageio/png/Library.h"

#include <algorithm>
#include <array>
#include <libdeflate.h>
#include <string_view>

namespace kestrine::png {

namespace {

constexpr std::uint32_t longestChunk = 0x7FFF'FFFF;

} // namespace

ImageDataChunks::ImageDataChunks(std::shared_ptr<const ByteReader> reader, std::uint64_t offset)
    : input_(std::move(reader), offset, bufferBytes), nextChunk_(offset) {
    beginChunk();
}

std::size_t ImageDataChunks::read(std::span<std::uint8_t> into) {
    std::size_t done = 0;
    while (state_ == State::inside && done < into.size()) {
        const std::size_t part = std::min<std::size_t>(left_, into.size() - done);
        if (input_.read(into.subspan(done, part)) < part) {
            state_ = State::broken;
            break;
        }
        checksum_ = libdeflate_crc32(checksum_, into.data() + done, part);
        left_ -= static_cast<std::uint32_t>(part);
        done += part;
        if (left_ == 0 && closeChunk())
            beginChunk();
    }
    return done;
}

void ImageDataChunks::beginChunk() {
    std::array<std::uint8_t, 8> head;
    while (true) {
        if (input_.read(head) < head.size()) {
            state_ = State::broken;
            return;
        }
        if (std::string_view(reinterpret_cast<const char*>(head.data()) + 4, 4) != "IDAT") {
            state_ = State::ended;
            return;
        }
        left_ = static_cast<std::uint32_t>(bigEndian(std::span(head).first(4)));
        if (left_ > longestChunk) {
            state_ = State::broken;
            return;
        }
        nextChunk_ += std::uint64_t{left_} + 12;
        checksum_ = libdeflate_crc32(0, head.data() + 4, 4);
        if (left_ > 0 || !closeChunk())
            return;
    }
}

bool ImageDataChunks::closeChunk() {
    std::array<std::uint8_t, 4> stored;
    if (input_.read(stored) < stored.size() || bigEndian(stored) != checksum_)
        state_ = State::broken;
    return state_ != State::broken;
}

} // namespace kestrine::png
