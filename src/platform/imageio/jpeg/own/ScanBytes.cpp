#include "platform/imageio/jpeg/own/ScanBytes.h"

#include <algorithm>

namespace kestrine::jpeg {

namespace {

constexpr int firstRestart = 0xD0;

/// Copies bytes up to the first FF or `count` and returns how many.
std::size_t copyPlainBytes(const std::uint8_t* from, std::size_t count, std::uint8_t* to) {
    const void* const found = std::memchr(from, 0xFF, count);
    const auto* const end = found == nullptr ? from + count : static_cast<const std::uint8_t*>(found);
    std::copy(from, end, to);
    return static_cast<std::size_t>(end - from);
}

} // namespace

ScanBytes::ScanBytes(std::size_t capacity)
    : capacity_(capacity), raw_(capacity), window_(lead + capacity + padding) {}

void ScanBytes::start(std::shared_ptr<const ByteReader> reader, std::uint64_t offset) {
    reader_ = std::move(reader);
    offset_ = offset;
    rawPosition_ = rawCount_ = 0;
    beginSegment();
}

void ScanBytes::beginSegment() {
    end_ = window_.data() + lead;
    isComplete_ = false;
    fillWindow();
}

/// Appends to the window until it is full or the segment ends.
void ScanBytes::fillWindow() {
    const std::uint8_t* const full = window_.data() + lead + capacity_;
    while (!isComplete_ && end_ != full) {
        if (!hasRaw())
            endSegment(endOfFile);
        else if (copyUpToFF())
            passFF();
    }
    limit_ = isComplete_ ? end_ : end_ - longestMCU - 16;
}

/// Reads the next piece of the file if the last one is used up. Returns false at the end of the file.
bool ScanBytes::hasRaw() {
    if (rawPosition_ == rawCount_) {
        rawCount_ = reader_->readAt(offset_, raw_);
        offset_ += rawCount_;
        rawPosition_ = 0;
    }
    return rawPosition_ != rawCount_;
}

/// Appends bytes up to the next FF. Returns true if there is one; otherwise the window is full or the next
/// piece of the file is needed.
bool ScanBytes::copyUpToFF() {
    const auto room = static_cast<std::size_t>(window_.data() + lead + capacity_ - end_);
    const std::size_t limit = std::min(room, rawCount_ - rawPosition_);
    const std::size_t copied = copyPlainBytes(raw_.data() + rawPosition_, limit, end_);
    rawPosition_ += copied;
    end_ += copied;
    return copied < limit;
}

/// Reads an FF and what follows it: a zero stands for the FF itself, further FFs are padding before a marker,
/// and any other byte is the code of a marker.
void ScanBytes::passFF() {
    ++rawPosition_;
    int code = nextRaw();
    if (code == 0) {
        *end_++ = 0xFF;
        return;
    }
    while (code == 0xFF)
        code = nextRaw();
    endSegment(code == 0 ? zeroAfterPadding : code);
}

int ScanBytes::nextRaw() { return hasRaw() ? raw_[rawPosition_++] : endOfFile; }

void ScanBytes::endSegment(int terminator) {
    terminator_ = terminator;
    isComplete_ = true;
}

bool ScanBytes::provide(Reservoir& reservoir) {
    if (!isComplete_) {
        const std::uint8_t* const kept = reservoir.next - lead;
        std::uint8_t* const start = window_.data();
        std::memmove(start, kept, static_cast<std::size_t>(end_ - kept));
        end_ -= kept - start;
        reservoir.next = start + lead;
        fillWindow();
    }
    return hasCovered(reservoir);
}

/// Whether less than a byte of the segment is left.
bool ScanBytes::endsSegment(Reservoir& reservoir) {
    return provide(reservoir) && isComplete_ && reservoir.bitsBefore(end_) < 8;
}

bool ScanBytes::passRestart(Reservoir& reservoir, unsigned number) {
    if (!endsSegment(reservoir) || !beginAfter(number))
        return false;
    reservoir = firstBits();
    return true;
}

bool ScanBytes::skipSegment(unsigned number) {
    while (!isComplete_) {
        end_ = window_.data() + lead;
        fillWindow();
    }
    return beginAfter(number);
}

/// Begins the next segment if restart marker `number` follows the current one.
bool ScanBytes::beginAfter(unsigned number) {
    if (terminator_ != firstRestart + static_cast<int>(number))
        return false;
    beginSegment();
    return true;
}

bool ScanBytes::isAtEnd(Reservoir& reservoir) {
    const auto isRestart = [this] { return terminator_ >= firstRestart && terminator_ < firstRestart + 8; };
    return endsSegment(reservoir) && terminator_ > 0 && !isRestart();
}

} // namespace kestrine::jpeg
