// ScanBytes: the entropy-coded bytes of a scan, without markers and without the zero that follows each FF. A
// small window moves over one segment (the bytes between two restart markers) after the other.
#pragma once

#include "platform/host/files/ByteReader.h"
#include "platform/imageio/jpeg/own/Reservoir.h"

#include <memory>
#include <optional>

namespace kestrine::jpeg {

class ScanBytes {
public:
    /// The largest MCU in bytes: 10 blocks of 64 symbols with 16 + 15 bits each. The MCU of a progressive
    /// scan of AC coefficients is one block of at most 63 symbols with 16 + 14 bits, and 63 bits that refine.
    static constexpr std::size_t longestMCU = 10 * 64 * 31 / 8;

    static constexpr std::size_t usualCapacity = 64 * 1024;

    /// `capacity` is the size of the window.
    explicit ScanBytes(std::size_t capacity = usualCapacity);

    /// Goes to the first segment of the scan that begins at `offset`.
    void start(std::shared_ptr<const ByteReader> reader, std::uint64_t offset);

    /// Releases the file.
    void finish() { reader_.reset(); }

    /// A reservoir before the first bit of the segment.
    Reservoir firstBits() const { return Reservoir(window_.data() + lead); }

    /// An MCU may be decoded without further checks if the reservoir's `next` is at or before this position.
    /// Otherwise provide() must be called first. Then no MCU reads outside the window or past bytes that the
    /// file still has:
    ///  1. An MCU moves `next` by at most longestMCU + 8 bytes, and a refill reads 8 bytes from there.
    ///  2. While the segment continues in the file, this position is longestMCU + 16 bytes before the end of
    ///     the valid bytes, so the MCU reads only those.
    ///  3. When the window holds the end of the segment, this position is that end. An MCU of a damaged file
    ///     may read past it, but stays within `padding`.
    ///  4. An MCU that took bits from past the end is detected afterwards, by hasCovered() or provide().
    const std::uint8_t* mayStartBefore() const { return limit_; }

    /// Moves the window forward to `reservoir`, which is updated, and fills it. Returns false when the
    /// reservoir has taken more bits than the segment has.
    bool provide(Reservoir& reservoir);

    /// Whether the segment has all bits that were taken. To be called after the last MCU of a run.
    bool hasCovered(const Reservoir& reservoir) const {
        return !isComplete_ || reservoir.bitsBefore(end_) >= 0;
    }

    /// Goes to the segment after restart marker `number` (0 to 7). Returns false unless the current segment
    /// ends here, except for less than a byte of padding, and exactly this marker follows it.
    bool passRestart(Reservoir& reservoir, unsigned number);

    /// Goes to the segment after restart marker `number` (0 to 7) without looking at the bits of the current
    /// segment. Returns false unless this marker is the first one after them.
    bool skipSegment(unsigned number);

    /// Whether the current segment ends here, except for less than a byte of padding, and a marker other than
    /// a restart marker follows it. The library reports bytes that it skips before a restart marker.
    bool isAtEnd(Reservoir& reservoir);

private:
    static constexpr std::size_t lead = 16; ///< bytes that a reservoir may look back
    /// Bytes that an MCU may read past the end of a damaged segment.
    static constexpr std::size_t padding = 4096;
    static_assert(padding > longestMCU + 16);

    bool endsSegment(Reservoir& reservoir);
    bool beginAfter(unsigned number);
    void beginSegment();
    void fillWindow();
    bool hasRaw();
    bool copyUpToFF();
    void passFF();
    int nextRaw();
    void endSegment(int terminator);

    std::shared_ptr<const ByteReader> reader_;
    std::uint64_t offset_ = 0;
    std::size_t capacity_; ///< in bytes of the segment
    Bytes raw_;            ///< a piece of the file
    std::size_t rawPosition_ = 0, rawCount_ = 0;
    Bytes window_; ///< `lead` bytes, then bytes of the segment, then padding
    std::uint8_t* end_ = nullptr;
    const std::uint8_t* limit_ = nullptr;
    bool isComplete_ = false; ///< whether the window reaches the segment's end
    int terminator_ = 0;      ///< if isComplete_: the code of the marker after it, or one of these:
    static constexpr int endOfFile = -1, zeroAfterPadding = -2;
};

} // namespace kestrine::jpeg
