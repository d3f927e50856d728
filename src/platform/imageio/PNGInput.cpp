#include "platform/imageio/PNGInput.h"

#include <algorithm>
#include <cstring>

namespace kestrine {

bool PNGInput::read(std::uint8_t* into, std::size_t count) {
    while (count > 0) {
        if (begin_ == end_ && !refill())
            return false;
        const std::size_t part = std::min(count, end_ - begin_);
        std::memcpy(into, piece_.data() + begin_, part);
        begin_ += part;
        into += part;
        count -= part;
    }
    return true;
}

bool PNGInput::refill() {
    begin_ = 0;
    end_ = reader_->readAt(position_, piece_);
    position_ += end_;
    endedEarly_ = end_ == 0;
    return !endedEarly_;
}

} // namespace kestrine
