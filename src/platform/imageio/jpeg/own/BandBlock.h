// Decodes one block of a progressive scan of AC coefficients from a reservoir. This is the innermost loop of
// such files. It keeps the set of the coefficients that are not 0, and finds the place of a coefficient by a
// look-up.
#pragma once

#include "platform/imageio/jpeg/own/BlockDecoder.h"

#include <limits>

namespace kestrine::jpeg {

/// The offset of a position in a group of blocks; see offsetAlongZigzag.
constexpr std::size_t offsetOf(int position) { return offsetAlongZigzag[static_cast<std::size_t>(position)]; }

/// The positions from `first` on.
constexpr std::uint64_t positionsFrom(int first) {
    return first > 63 ? 0 : std::numeric_limits<std::uint64_t>::max() << first;
}

/// The number of blocks that end, including the current one.
inline std::uint32_t endedBlocksOf(const BandEntry& entry, std::uint64_t bits) {
    const std::uint64_t extra = bits << entry.codeLength() >> 1 >> entry.extraShift();
    return (1U << entry.extraBits()) + static_cast<std::uint32_t>(extra);
}

/// The set bits of a byte: how many, and for each how many bits below it are clear.
struct SetBits {
    std::uint8_t count = 0;
    std::array<std::uint8_t, 8> clearBelow{};
};
inline constexpr std::array<SetBits, 256> setBitsOf = [] {
    std::array<SetBits, 256> table;
    for (unsigned byte = 0; byte < table.size(); ++byte)
        for (unsigned bit = 0; bit < 8; ++bit)
            if ((byte >> bit & 1) != 0) {
                SetBits& bits = table[byte];
                bits.clearBelow[bits.count] = static_cast<std::uint8_t>(bit - bits.count);
                ++bits.count;
            }
    return table;
}();

/// The number of clear bits between bit `from` and the set bit before which there are `skipped` other set
/// ones; at least 64 if there is none. A loop over the bits would take much longer, because its length is
/// hard to predict.
[[gnu::always_inline]] inline int clearBitsBefore(std::uint64_t bits, int from, int skipped) {
    int clear = 0;
    for (; from < 64; from += 8) {
        const SetBits& next = setBitsOf[static_cast<std::uint8_t>(bits >> from)];
        if (skipped < next.count) [[likely]]
            return clear + next.clearBelow[static_cast<std::size_t>(skipped)];
        skipped -= next.count;
        clear += 8 - next.count;
    }
    return 64;
}

/// std::popcount() is a call where the processor may lack an instruction for it.
constexpr int countOfSetBits(std::uint64_t bits) {
    bits -= bits >> 1 & 0x5555'5555'5555'5555;
    bits = (bits & 0x3333'3333'3333'3333) + (bits >> 2 & 0x3333'3333'3333'3333);
    bits = (bits + (bits >> 4)) & 0x0F0F'0F0F'0F0F'0F0F;
    return static_cast<int>(bits * 0x0101'0101'0101'0101 >> 56);
}

/// The coefficients of one block that a refinement finds known, which have one bit each in the stream: where
/// it is 1, the magnitude grows. The bits are collected, and used when all have been read.
class KnownCoefficients {
public:
    explicit KnownCoefficients(std::uint64_t positions)
        : positions_(positions), count_(countOfSetBits(positions)), left_(count_) {}

    bool isEmpty() const { return positions_ == 0; }

    /// Takes the bits of the next `count` of them. The reservoir must hold 26 bits, and holds at least 10
    /// then.
    [[gnu::always_inline]] void take(Reservoir& reservoir, int count) {
        left_ -= count;
        if (count <= 16) [[likely]] {
            append(reservoir, count);
            return;
        }
        reservoir.refill();
        append(reservoir, count / 2);
        reservoir.refill();
        append(reservoir, count - count / 2);
    }
    [[gnu::always_inline]] void takeAll(Reservoir& reservoir) {
        if (left_ == 0)
            return;
        reservoir.refill();
        take(reservoir, left_);
    }

    /// Adds `step` to the magnitudes. All bits must have been taken.
    void grow(std::int16_t* block, int step) const {
        if (isEmpty())
            return;
        std::uint64_t bits = bits_ << (64 - count_);
        for (std::uint64_t rest = positions_; rest != 0; rest &= rest - 1, bits <<= 1) {
            std::int16_t& coefficient = block[offsetOf(std::countr_zero(rest))];
            const int sign = coefficient >> 15 | 1, isSet = static_cast<int>(bits >> 63);
            coefficient = static_cast<std::int16_t>(coefficient + sign * (step & -isSet));
        }
    }

private:
    [[gnu::always_inline]] void append(Reservoir& reservoir, int count) {
        bits_ = bits_ << count | reservoir.bits >> 1 >> (63 - count);
        reservoir.drop(count);
    }

    const std::uint64_t positions_;
    const int count_;
    std::uint64_t bits_ = 0;
    int left_;
};

/// What a scan of AC coefficients sends.
struct Band {
    const BandTable& table;
    int first, last;         ///< along the zigzag
    int step;                ///< the value of the bit that it sends, or of the lowest one
    std::uint64_t positions; ///< from first to last
};

// The reservoir holds at least 10 bits at every look-up: a symbol takes at most 16 + 14 of the 56 bits after
// the refill, and KnownCoefficients::take() leaves 10.

/// The entry of the next symbol; its total is 0 if there is none. The reservoir holds 56 bits then.
[[gnu::always_inline]] inline BandEntry nextEntry(Reservoir& reservoir, const BandTable& table) {
    const BandEntry entry = table.entries[reservoir.bits >> (64 - BandTable::indexBits)];
    reservoir.refill();
    return entry.total() != 0 ? entry : table.longEntry(reservoir.bits);
}

/// Decodes a block in the first scan of a band, and adds to `nonZero` the positions of its coefficients.
/// `ended` is 0, and then the number of blocks after this one that have ended. Returns false when the scan is
/// damaged.
template <bool stores>
[[gnu::always_inline]] inline bool takeFirstBits(Reservoir& reservoir, const Band& band, std::int16_t* block,
                                                 std::uint64_t& nonZero, std::uint32_t& ended) {
    std::uint64_t found = 0;
    for (int position = band.first; position <= band.last; ++position) {
        const BandEntry entry = nextEntry(reservoir, band.table);
        if (entry.total() == 0) [[unlikely]]
            return false;
        if (entry.isEndOfBlocks()) {
            ended = endedBlocksOf(entry, reservoir.bits) - 1;
            reservoir.drop(entry.total());
            break;
        }
        position += entry.step();
        if (position > band.last)
            return false;
        const int value = extraValue(reservoir.bits << entry.codeLength(), entry.extraShift());
        reservoir.drop(entry.total());
        if constexpr (stores)
            block[offsetOf(position)] = static_cast<std::int16_t>(value * band.step);
        found |= static_cast<std::uint64_t>(value != 0) << position;
    }
    nonZero |= found;
    return true;
}

/// The same in a later scan of the band; `ended` may count the block itself. Each symbol adds a coefficient,
/// if it has a value, after a number of zeros. The coefficients before that place that are known already have
/// a bit each after the symbol.
template <bool stores>
[[gnu::always_inline]] inline bool refineBlock(Reservoir& reservoir, const Band& band, std::int16_t* block,
                                               std::uint64_t& nonZero, std::uint32_t& ended) {
    const std::uint64_t zeros = band.positions & ~nonZero;
    KnownCoefficients known(band.positions & nonZero);
    std::uint64_t added = 0;
    for (int position = band.first; ended == 0 && position <= band.last;) {
        const BandEntry entry = nextEntry(reservoir, band.table);
        if (entry.total() == 0) [[unlikely]]
            return false;
        if (entry.isEndOfBlocks()) {
            ended = endedBlocksOf(entry, reservoir.bits);
            reservoir.drop(entry.total());
            break;
        }
        const int value = extraValue(reservoir.bits << entry.codeLength(), entry.extraShift());
        reservoir.drop(entry.total());
        const int passed = clearBitsBefore(zeros, position, entry.step());
        const int place = position + entry.step() + passed;
        if (place > band.last)
            return false;
        known.take(reservoir, passed);
        if constexpr (stores)
            block[offsetOf(place)] = static_cast<std::int16_t>(value * band.step);
        added |= static_cast<std::uint64_t>(value != 0) << place;
        position = place + 1;
    }
    if (ended != 0) {
        known.takeAll(reservoir);
        --ended;
    }
    if constexpr (stores)
        known.grow(block, band.step);
    nonZero |= added;
    return true;
}

} // namespace kestrine::jpeg
