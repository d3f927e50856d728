#include "platform/imageio/jpeg/ScanBytes.h"

#include <algorithm>

namespace kestrine::jpeg {

namespace {

constexpr int firstRestart = 0xD0;

/// The highest bit of each byte that is FF is set in the result; above the lowest such byte others may be,
/// too.
std::uint64_t marksOfFF(std::uint64_t bytes) {
    constexpr std::uint64_t ones = 0x0101010101010101;
    return (~bytes - ones) & bytes & (ones << 7);
}

std::uint64_t loadLittleEndian(const std::uint8_t* bytes) { return __builtin_bswap64(loadBigEndian(bytes)); }

/// Copies bytes up to the first FF or `count` and returns how many. May also write behind them, within
/// `count`.
std::size_t copyPlainBytes(const std::uint8_t* from, std::size_t count, std::uint8_t* to) {
    constexpr std::size_t step = sizeof(std::uint64_t);
    std::size_t i = 0;
    for (; i + step <= count; i += step) {
        std::memcpy(to + i, from + i, step);
        if (const std::uint64_t marks = marksOfFF(loadLittleEndian(from + i)); marks != 0)
            return i + static_cast<std::size_t>(std::countr_zero(marks)) / 8;
    }
    for (; i < count && from[i] != 0xFF; ++i)
        to[i] = from[i];
    return i;
}

} // namespace

ScanBytes::ScanBytes() : raw_(capacity), window_(lead + capacity + padding) {}

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
    const std::uint8_t* const full = window_.data() + lead + capacity;
    while (!isComplete_ && end_ != full) {
        if (!hasRaw())
            endSegment(endOfFile);
        else if (copyUpToFF())
            passFF();
    }
    limit_ = isComplete_ ? end_ : end_ - longestMCU - 16;
}

/// Reads the next piece of the file when the last one is used up. False at the end.
bool ScanBytes::hasRaw() {
    if (rawPosition_ == rawCount_) {
        rawCount_ = reader_->readAt(offset_, raw_);
        offset_ += rawCount_;
        rawPosition_ = 0;
    }
    return rawPosition_ != rawCount_;
}

/// Appends plain bytes. True when an FF stops them; else the window is full or another piece of the file is
/// due.
bool ScanBytes::copyUpToFF() {
    const auto room = static_cast<std::size_t>(window_.data() + lead + capacity - end_);
    const std::size_t most = std::min(room, rawCount_ - rawPosition_);
    const std::size_t copied = copyPlainBytes(raw_.data() + rawPosition_, most, end_);
    rawPosition_ += copied;
    end_ += copied;
    return copied < most;
}

/// Takes an FF and what follows: a zero means the FF itself, further FFs fill up before a marker, anything
/// else is a marker.
void ScanBytes::passFF() {
    ++rawPosition_;
    int code = nextRaw();
    if (code == 0) {
        *end_++ = 0xFF;
        return;
    }
    while (code == 0xFF)
        code = nextRaw();
    endSegment(code == 0 ? oddity : code);
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

bool ScanBytes::passRestart(Reservoir& reservoir, unsigned number) {
    if (!provide(reservoir) || !isComplete_ || reservoir.bitsBefore(end_) >= 8
        || terminator_ != firstRestart + static_cast<int>(number))
        return false;
    beginSegment();
    reservoir = firstBits();
    return true;
}

} // namespace kestrine::jpeg
