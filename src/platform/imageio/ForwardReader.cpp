#include "platform/imageio/ForwardReader.h"

#include <algorithm>

namespace kestrine {

std::size_t ForwardReader::read(std::span<std::uint8_t> into) {
    const std::size_t count = readBuffered(into);
    endedEarly_ = endedEarly_ || count < into.size();
    return count;
}

std::size_t ForwardReader::readBuffered(std::span<std::uint8_t> into) {
    const std::size_t buffered = std::min(into.size(), count_ - position_);
    std::copy_n(buffer_.begin() + static_cast<std::ptrdiff_t>(position_), buffered, into.begin());
    position_ += buffered;
    const std::span<std::uint8_t> rest = into.subspan(buffered);
    if (rest.empty())
        return buffered;
    if (rest.size() < buffer_.size())
        return refill() ? buffered + readBuffered(rest) : buffered;
    const std::size_t direct = reader_->readAt(bufferEnd_, rest);
    bufferEnd_ += direct;
    position_ = count_ = 0;
    return buffered + direct;
}

void ForwardReader::moveTo(std::uint64_t offset) {
    if (offset < bufferStart() || offset > bufferEnd_) {
        // Half of the buffer is for the bytes before `offset`, since the next move may go back.
        bufferEnd_ = offset - std::min<std::uint64_t>(offset, buffer_.size() / 2);
        refill();
    }
    if (offset > bufferEnd_) {
        bufferEnd_ = offset;
        count_ = 0;
    }
    position_ = count_ - static_cast<std::size_t>(bufferEnd_ - offset);
}

bool ForwardReader::refill() {
    position_ = 0;
    count_ = reader_->readAt(bufferEnd_, buffer_);
    bufferEnd_ += count_;
    return count_ != 0;
}

} // namespace kestrine
