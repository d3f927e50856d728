#include "platform/imageio/png/fast/InflatedPixels.h"

#include <algorithm>

namespace kestrine::png {

InflatedPixels::InflatedPixels(const InflateFunctions& library, std::shared_ptr<const ByteReader> reader,
                               std::uint64_t offset)
    : library_(library), chunks_(std::move(reader), offset) {
    library_.initialise(state_.get());
    state_->crc_flag = ISAL_ZLIB;
    state_->next_in = compressed_.data();
    state_->avail_in = static_cast<std::uint32_t>(chunks_.read(compressed_));
    isSound_ = state_->avail_in > 0 && hasUsualHeader();
}

bool InflatedPixels::read(std::span<std::uint8_t> into) {
    constexpr std::size_t maxAtOnce = std::size_t{1} << 30; // ISA-L has 32-bit counters
    while (!into.empty()) {
        const std::size_t part = std::min(into.size(), maxAtOnce);
        state_->next_out = into.data();
        state_->avail_out = static_cast<std::uint32_t>(part);
        while (state_->avail_out > 0)
            if (!advance())
                return false;
        into = into.subspan(part);
    }
    return true;
}

bool InflatedPixels::endsHere() {
    state_->next_out = &surplus_;
    state_->avail_out = 1;
    while (state_->block_state != ISAL_BLOCK_FINISH)
        if (!advance() || state_->avail_out == 0)
            return false;
    return state_->avail_in == 0 && chunks_.read({&surplus_, 1}) == 0 && chunks_.haveEnded();
}

bool InflatedPixels::advance() {
    if (!isSound_ || state_->block_state == ISAL_BLOCK_FINISH)
        return isSound_ = false;
    if (state_->avail_in == 0) {
        state_->next_in = compressed_.data();
        state_->avail_in = static_cast<std::uint32_t>(chunks_.read(compressed_));
    }
    const bool hadInput = state_->avail_in > 0;
    const std::uint32_t space = state_->avail_out;
    const int outcome = library_.inflate(state_.get());
    isSound_ =
        (outcome == ISAL_DECOMP_OK || outcome == ISAL_END_INPUT) && (hadInput || state_->avail_out < space);
    return isSound_;
}

} // namespace kestrine::png
