#include "platform/imageio/gif/CodeCheck.h"

#include <algorithm>

namespace kestrine::gif {

CodeCheck::CodeCheck(unsigned bits, std::uint64_t pixels) : clear_(1U << bits), pixelsLeft_(pixels) {
    std::fill_n(length_.begin(), clear_, std::uint16_t{1});
    startAgain();
}

void CodeCheck::startAgain() {
    next_ = clear_ + 2;
    previous_ = maximumCodes;
}

bool CodeCheck::accepts(int code) {
    const auto current = static_cast<unsigned>(code);
    if (current == clear_) {
        startAgain();
        return true;
    }
    const bool isFirst = previous_ == maximumCodes;
    if (!isFirst && next_ < maximumCodes) {
        length_[next_] = static_cast<std::uint16_t>(length_[previous_] + 1);
        ++next_;
    }
    if (current == clear_ + 1 || current >= (isFirst ? clear_ : next_))
        return false;
    pixelsLeft_ -= std::min<std::uint64_t>(pixelsLeft_, length_[current]);
    previous_ = current;
    return true;
}

} // namespace kestrine::gif
