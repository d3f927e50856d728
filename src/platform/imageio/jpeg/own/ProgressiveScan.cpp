#include "platform/imageio/jpeg/own/ProgressiveScan.h"

#include <limits>

namespace kestrine::jpeg {

namespace {

/// There is one window for each scan.
constexpr std::size_t windowOfScan = 16 * 1024;

constexpr std::size_t offsetOf(int position) { return offsetAlongZigzag[static_cast<std::size_t>(position)]; }

/// Bits of the coefficients of a scan. Shifted they fit 16 bits, so that none becomes 0.
int largestSize(const Scan& scan) {
    return scan.isRefinement() ? 1 : std::min(BandTable::largestSize, 15 - scan.header.low);
}

/// The positions from `first` on.
constexpr std::uint64_t positionsFrom(int first) {
    return first > 63 ? 0 : std::numeric_limits<std::uint64_t>::max() << first;
}

/// The number of blocks that end, including the current one.
std::uint32_t endedBlocksOf(const BandEntry& entry, std::uint64_t bits) {
    const std::uint64_t extra = bits << entry.codeLength() >> 1 >> entry.extraShift();
    return (1U << entry.extraBits()) + static_cast<std::uint32_t>(extra);
}

/// The set bits of a byte: how many, and for each how many bits below it are clear.
struct SetBits {
    std::uint8_t count = 0;
    std::array<std::uint8_t, 8> clearBelow{};
};
constexpr std::array<SetBits, 256> setBitsOf = [] {
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

/// The coefficients of one block that a refinement finds known, which have one bit each in the stream: where
/// it is 1, the magnitude grows. The bits are collected, and used when all have been read.
class KnownCoefficients {
public:
    explicit KnownCoefficients(std::uint64_t positions)
        : positions_(positions), left_(std::popcount(positions)) {}

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
        std::uint64_t bits = bits_ << (64 - std::popcount(positions_));
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
    std::uint64_t bits_ = 0;
    int left_;
};

} // namespace

ProgressiveScan::ProgressiveScan(const Scan& scan, std::uint32_t mcusAcross, bool storesAC)
    : scan_(scan), mcusAcross_(mcusAcross), storesAC_(storesAC), bytes_(windowOfScan) {}

bool ProgressiveScan::start(std::shared_ptr<const ByteReader> reader) {
    if (!scan_.isDC()) {
        acTable_.resize(1);
        if (!acTable_[0].assign(scan_.codes[0], largestSize(scan_)))
            return false;
    } else if (!scan_.isRefinement()) {
        dcTables_.resize(scan_.header.componentCount);
        for (std::size_t i = 0; i < dcTables_.size(); ++i)
            if (!dcTables_[i].assign(scan_.codes[i]))
                return false;
    }
    bytes_.start(std::move(reader), scan_.offset);
    reservoir_ = bytes_.firstBits();
    reservoir_.refill();
    restarts_ = RestartCounter(scan_.restartInterval);
    return true;
}

/// Whether the next MCU may be decoded without further checks, after moving the window if necessary.
[[gnu::always_inline]] inline bool ProgressiveScan::mayDecode(Reservoir& reservoir) {
    if (reservoir.next <= bytes_.mayStartBefore()) [[likely]]
        return true;
    Reservoir moved = reservoir; // so that the other one can stay in registers
    const bool isProvided = bytes_.provide(moved);
    reservoir = moved;
    return isProvided;
}

bool ProgressiveScan::passRestart() {
    if (!bytes_.passRestart(reservoir_, restarts_.pass()))
        return false;
    reservoir_.refill();
    predictors_ = {};
    endedBlocks_ = 0;
    return true;
}

/// Calls `decode` with the first number and the count of the MCUs up to each restart marker, `count` in
/// total.
template <class Decode>
bool ProgressiveScan::decodeRuns(std::uint32_t count, const Decode& decode) {
    for (std::uint32_t first = 0; first < count;) {
        if (restarts_.isDue() && !passRestart())
            return false;
        const std::uint32_t run = restarts_.take(count - first);
        if (!decode(first, run))
            return false;
        first += run;
    }
    return bytes_.hasCovered(reservoir_);
}

bool ProgressiveScan::decodeDC(std::uint32_t band, std::span<DCBand> components) {
    const auto takeFirst = [this](std::size_t i, std::int16_t& coefficient) {
        return takeFirstDC(i, coefficient);
    };
    const auto takeBit = [this](std::size_t, std::int16_t& coefficient) { return takeBitOfDC(coefficient); };
    if (scan_.header.componentCount > 1)
        return scan_.isRefinement() ? decodeInterleaved(components, takeBit)
                                    : decodeInterleaved(components, takeFirst);
    DCBand& component = components[scan_.header.components[0]];
    return scan_.isRefinement() ? decodeRows(band, component, takeBit)
                                : decodeRows(band, component, takeFirst);
}

/// Calls `decode` with the number of the component in the scan and the coefficient of each block, MCU by MCU.
template <class Decode>
bool ProgressiveScan::decodeInterleaved(std::span<DCBand> components, const Decode& decode) {
    const auto decodesComponent = [&](std::size_t i, std::uint32_t mcu) {
        DCBand& component = components[scan_.header.components[i]];
        const std::uint32_t columns = component.columnsPerMCU();
        for (std::uint32_t y = 0; y < component.rows(); ++y)
            for (std::uint32_t x = 0; x < columns; ++x)
                if (!decode(i, component.row(y)[mcu * columns + x]))
                    return false;
        return true;
    };
    return decodeRuns(mcusAcross_, [&](std::uint32_t first, std::uint32_t count) {
        for (std::uint32_t mcu = first; mcu < first + count; ++mcu) {
            if (!mayDecode(reservoir_))
                return false;
            for (std::size_t i = 0; i < scan_.header.componentCount; ++i)
                if (!decodesComponent(i, mcu))
                    return false;
        }
        return true;
    });
}

/// The same for the blocks of the only component, row by row.
template <class Decode>
bool ProgressiveScan::decodeRows(std::uint32_t band, DCBand& component, const Decode& decode) {
    const std::uint32_t rows = component.rowsInBand(band);
    for (std::uint32_t y = 0; y < rows; ++y) {
        std::int16_t* const row = component.row(y);
        const bool isDecoded =
            decodeRuns(component.blocksAcross(), [&](std::uint32_t first, std::uint32_t count) {
                for (std::uint32_t x = first; x < first + count; ++x)
                    if (!mayDecode(reservoir_) || !decode(0, row[x]))
                        return false;
                return true;
            });
        if (!isDecoded)
            return false;
    }
    return true;
}

/// Values outside 16 bits, which no picture has, are refused.
inline bool ProgressiveScan::takeFirstDC(std::size_t component, std::int16_t& coefficient) {
    if (!takeDifference(reservoir_, dcTables_[component], predictors_[component]))
        return false;
    const int value = predictors_[component] * (1 << scan_.header.low);
    coefficient = static_cast<std::int16_t>(value);
    return coefficient == value;
}

inline bool ProgressiveScan::takeBitOfDC(std::int16_t& coefficient) {
    if (reservoir_.count == 0)
        reservoir_.refill();
    const int bit = static_cast<int>(reservoir_.bits >> 63) << scan_.header.low;
    coefficient = static_cast<std::int16_t>(coefficient | bit);
    reservoir_.drop(1);
    return true;
}

bool ProgressiveScan::decodeAC(BlockStrip& strip, std::uint32_t count) {
    return decodeRuns(count, [&](std::uint32_t first, std::uint32_t run) {
        if (scan_.isRefinement())
            return storesAC_ ? refineAC<true>(strip, first, run) : refineAC<false>(strip, first, run);
        return storesAC_ ? decodeFirstAC<true>(strip, first, run) : decodeFirstAC<false>(strip, first, run);
    });
}

/// The reservoir holds at least 10 bits at every look-up: a symbol takes at most 16 + 14 of the 56 bits after
/// the refill.
template <bool stores>
bool ProgressiveScan::decodeFirstAC(BlockStrip& strip, std::uint32_t firstBlock, std::uint32_t count) {
    Reservoir reservoir = reservoir_;
    std::uint32_t ended = endedBlocks_;
    const BandTable& table = acTable_[0];
    const int first = scan_.header.first, last = scan_.header.last, low = scan_.header.low;
    const std::uint32_t end = firstBlock + count;
    std::uint32_t number = firstBlock;
    while (number < end) {
        if (ended != 0) {
            const std::uint32_t skipped = std::min(ended, end - number);
            ended -= skipped;
            number += skipped;
            continue;
        }
        if (!mayDecode(reservoir))
            return false;
        std::int16_t* const block = strip.block(number);
        std::uint64_t found = 0;
        int position = first;
        do {
            BandEntry entry = table.entries[reservoir.bits >> (64 - BandTable::indexBits)];
            reservoir.refill();
            if (entry.total() == 0) [[unlikely]] {
                entry = table.longEntry(reservoir.bits);
                if (entry.total() == 0)
                    return false;
            }
            if (entry.isEndOfBlocks()) {
                ended = endedBlocksOf(entry, reservoir.bits) - 1;
                reservoir.drop(entry.total());
                break;
            }
            position += entry.step();
            if (position > last)
                return false;
            const int value = extraValue(reservoir.bits << entry.codeLength(), entry.extraShift());
            reservoir.drop(entry.total());
            if constexpr (stores)
                block[offsetOf(position)] = static_cast<std::int16_t>(value * (1 << low));
            found |= static_cast<std::uint64_t>(value != 0) << position;
            ++position;
        } while (position <= last);
        strip.nonZero(number) |= found;
        ++number;
    }
    reservoir_ = reservoir;
    endedBlocks_ = ended;
    return true;
}

/// Each symbol adds a coefficient, if it has a value, after a number of zeros. The coefficients before that
/// place that are known already have a bit each after the symbol.
///
/// The reservoir holds at least 10 bits at every look-up: a symbol takes at most 16 + 14 of the 56 bits after
/// the refill, see also KnownCoefficients::take().
template <bool stores>
bool ProgressiveScan::refineAC(BlockStrip& strip, std::uint32_t firstBlock, std::uint32_t count) {
    Reservoir reservoir = reservoir_;
    std::uint32_t ended = endedBlocks_;
    const BandTable& table = acTable_[0];
    const int first = scan_.header.first, last = scan_.header.last, step = 1 << scan_.header.low;
    const std::uint64_t band = positionsFrom(first) & ~positionsFrom(last + 1);
    for (std::uint32_t number = firstBlock; number < firstBlock + count; ++number) {
        std::uint64_t added = 0;
        const std::uint64_t zeros = band & ~strip.nonZero(number);
        KnownCoefficients known(band & strip.nonZero(number));
        if (ended != 0 && known.isEmpty()) {
            --ended;
            continue;
        }
        if (!mayDecode(reservoir))
            return false;
        std::int16_t* const block = strip.block(number);
        for (int position = first; ended == 0 && position <= last;) {
            BandEntry entry = table.entries[reservoir.bits >> (64 - BandTable::indexBits)];
            reservoir.refill();
            if (entry.total() == 0) [[unlikely]] {
                entry = table.longEntry(reservoir.bits);
                if (entry.total() == 0)
                    return false;
            }
            if (entry.isEndOfBlocks()) {
                ended = endedBlocksOf(entry, reservoir.bits);
                reservoir.drop(entry.total());
                break;
            }
            const int value = extraValue(reservoir.bits << entry.codeLength(), entry.extraShift());
            reservoir.drop(entry.total());
            const int passed = clearBitsBefore(zeros, position, entry.step());
            const int place = position + entry.step() + passed;
            if (place > last)
                return false;
            known.take(reservoir, passed);
            if constexpr (stores)
                block[offsetOf(place)] = static_cast<std::int16_t>(value * step);
            added |= static_cast<std::uint64_t>(value != 0) << place;
            position = place + 1;
        }
        if (ended != 0) {
            known.takeAll(reservoir);
            --ended;
        }
        if constexpr (stores)
            known.grow(block, step);
        strip.nonZero(number) |= added;
    }
    reservoir_ = reservoir;
    endedBlocks_ = ended;
    return true;
}

} // namespace kestrine::jpeg
