// ScanBytes: the entropy-coded bytes of a scan without what the format puts between them: the zero behind
// each FF, and the markers. They come segment by segment (what lies between two restart markers) through a
// small window.
#pragma once

#include "platform/host/files/ByteReader.h"
#include "platform/imageio/jpeg/own/Reservoir.h"

#include <memory>
#include <optional>

namespace kestrine::jpeg {

/// Bytes below mayStartBefore() may be decoded from without a further question, an MCU at a time.
class ScanBytes {
public:
    /// What an MCU can take: 10 blocks of 64 symbols of 16 + 15 bits.
    static constexpr std::size_t longestMCU = 10 * 64 * 31 / 8;

    ScanBytes();

    /// Goes to the first segment of the scan that begins at `offset`.
    void start(std::shared_ptr<const ByteReader> reader, std::uint64_t offset);

    /// Lets go of the file.
    void finish() { reader_.reset(); }

    /// The first bit of the segment.
    Reservoir firstBits() const { return Reservoir(window_.data() + lead); }

    /// An MCU may be decoded from a reservoir whose `next` is not behind this: every byte it can touch is
    /// there to read, and if bytes are missing that the file still has, it cannot touch those. Else `provide`
    /// comes first.
    const std::uint8_t* mayStartBefore() const { return limit_; }

    /// Brings more of the segment, which may move it in memory: `reservoir` goes with it. False when the
    /// reservoir has taken more bits than the segment has.
    bool provide(Reservoir& reservoir);

    /// Whether all bits taken were there. To be asked behind the last MCU of a run.
    bool hasCovered(const Reservoir& reservoir) const {
        return !isComplete_ || reservoir.bitsBefore(end_) >= 0;
    }

    /// Goes behind the restart marker of `number` (0 to 7). False unless the segment ends here, but for the
    /// bits that fill up its last byte, and just this marker follows.
    bool passRestart(Reservoir& reservoir, unsigned number);

private:
    static constexpr std::size_t lead = 16;      ///< what a reservoir may look back
    static constexpr std::size_t padding = 4096; ///< what an MCU may read beyond the end of a damaged segment
    static_assert(padding > longestMCU + 16);
    static constexpr std::size_t capacity = 64 * 1024;

    void beginSegment();
    void fillWindow();
    bool hasRaw();
    bool copyUpToFF();
    void passFF();
    int nextRaw();
    void endSegment(int terminator);

    std::shared_ptr<const ByteReader> reader_;
    std::uint64_t offset_ = 0;
    Bytes raw_; ///< as in the file
    std::size_t rawPosition_ = 0, rawCount_ = 0;
    Bytes window_; ///< lead, then bytes of the segment
    std::uint8_t* end_ = nullptr;
    const std::uint8_t* limit_ = nullptr;
    bool isComplete_ = false; ///< whether the window reaches the segment's end
    int terminator_ = 0;      ///< then: the marker behind it, or one of these
    static constexpr int endOfFile = -1, oddity = -2;
};

} // namespace kestrine::jpeg
