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

/// The bits that are set in a byte: how many, and the number of each.
struct SetBits {
    std::uint8_t count = 0;
    std::array<std::uint8_t, 8> numbers{};
};
constexpr std::array<SetBits, 256> setBitsOf = [] {
    std::array<SetBits, 256> table;
    for (unsigned byte = 0; byte < table.size(); ++byte)
        for (std::uint8_t bit = 0; bit < 8; ++bit)
            if ((byte >> bit & 1) != 0)
                table[byte].numbers[table[byte].count++] = bit;
    return table;
}();

/// The number of the set bit of `bits` at or after bit `from` before which there are `skipped` others; 64 or
/// more if there is none. A loop over the bits would take much longer, because its length is hard to predict.
[[gnu::always_inline]] inline int numberOfSetBit(std::uint64_t bits, int from, int skipped) {
    for (; from < 64; from += 8) {
        const SetBits& next = setBitsOf[static_cast<std::uint8_t>(bits >> from)];
        if (skipped < next.count) [[likely]]
            return from + next.numbers[static_cast<std::size_t>(skipped)];
        skipped -= next.count;
    }
    return from;
}

/// The coefficients of one block that a refinement finds known, which have one bit each in the stream: where
/// it is 1, the magnitude grows. The bits are collected, and used when all have been read.
class KnownCoefficients {
public:
    explicit KnownCoefficients(std::uint64_t positions)
        : positions_(positions), left_(std::popcount(positions)) {}

    bool isEmpty() const { return positions_ == 0; }

    /// Takes the bits of the next `count` of them.
    [[gnu::always_inline]] void take(Reservoir& reservoir, int count) {
        constexpr int alwaysHeld = 56;
        left_ -= count;
        if (reservoir.count < count) [[unlikely]]
            reservoir.refill();
        if (count > alwaysHeld) [[unlikely]] {
            append(reservoir, alwaysHeld / 2);
            reservoir.refill();
            count -= alwaysHeld / 2;
        }
        append(reservoir, count);
    }
    [[gnu::always_inline]] void takeAll(Reservoir& reservoir) {
        if (left_ != 0)
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

bool ProgressiveScan::decodeBand(std::uint32_t band, std::span<BandCoefficients> components) {
    for (std::size_t i = 0; i < scan_.header.componentCount; ++i)
        components_[i] = &components[scan_.header.components[i]];
    if (scan_.header.componentCount > 1)
        return decodeRow(0, mcusAcross_);
    const BandCoefficients& component = *components_[0];
    const std::uint32_t above = band * component.rowsPerBand();
    const std::uint32_t rows = std::min(component.rowsPerBand(), component.blocksDown() - above);
    for (std::uint32_t row = 0; row < rows; ++row)
        if (!decodeRow(row, component.blocksAcross()))
            return false;
    return true;
}

/// Decodes the next `count` MCUs.
bool ProgressiveScan::decodeRow(std::uint32_t row, std::uint32_t count) {
    for (std::uint32_t first = 0; first < count;) {
        if (restarts_.isDue() && !passRestart())
            return false;
        const std::uint32_t run = restarts_.take(count - first);
        if (!decodeRun({row, first, run}))
            return false;
        first += run;
    }
    return bytes_.hasCovered(reservoir_);
}

bool ProgressiveScan::passRestart() {
    if (!bytes_.passRestart(reservoir_, restarts_.pass()))
        return false;
    reservoir_.refill();
    predictors_ = {};
    endedBlocks_ = 0;
    return true;
}

bool ProgressiveScan::decodeRun(const Run& run) {
    if (scan_.isDC())
        return scan_.isRefinement() ? refineDC(run) : decodeFirstDC(run);
    if (scan_.isRefinement())
        return storesAC_ ? refineAC<true>(run) : refineAC<false>(run);
    return storesAC_ ? decodeFirstAC<true>(run) : decodeFirstAC<false>(run);
}

/// Whether the next MCU may be decoded without further checks, after moving the window if necessary.
bool ProgressiveScan::mayDecode(Reservoir& reservoir) {
    if (reservoir.next <= bytes_.mayStartBefore()) [[likely]]
        return true;
    return bytes_.provide(reservoir);
}

/// Calls `decode` with the number in the scan of the component and the DC coefficient of each block.
template <class Decode>
bool ProgressiveScan::decodeDC(const Run& run, const Decode& decode) {
    const std::size_t count = scan_.header.componentCount;
    for (std::uint32_t mcu = run.first; mcu < run.first + run.count; ++mcu) {
        if (!mayDecode(reservoir_))
            return false;
        for (std::size_t i = 0; i < count; ++i) {
            BandCoefficients& component = *components_[i];
            const std::uint32_t columns = count == 1 ? 1 : component.columnsPerMCU();
            const std::uint32_t rows = count == 1 ? 1 : component.rowsPerBand();
            for (std::uint32_t y = 0; y < rows; ++y)
                for (std::uint32_t x = 0; x < columns; ++x)
                    if (!decode(i, *component.block(run.row + y, mcu * columns + x)))
                        return false;
        }
    }
    return true;
}

/// Values outside 16 bits, which no picture has, are refused.
bool ProgressiveScan::decodeFirstDC(const Run& run) {
    return decodeDC(run, [this](std::size_t i, std::int16_t& coefficient) {
        if (!takeDifference(reservoir_, dcTables_[i], predictors_[i]))
            return false;
        const int value = predictors_[i] * (1 << scan_.header.low);
        coefficient = static_cast<std::int16_t>(value);
        return coefficient == value;
    });
}

bool ProgressiveScan::refineDC(const Run& run) {
    return decodeDC(run, [this](std::size_t, std::int16_t& coefficient) {
        if (reservoir_.count == 0)
            reservoir_.refill();
        const int bit = static_cast<int>(reservoir_.bits >> 63) << scan_.header.low;
        coefficient = static_cast<std::int16_t>(coefficient | bit);
        reservoir_.drop(1);
        return true;
    });
}

template <bool stores>
bool ProgressiveScan::decodeFirstAC(const Run& run) {
    Reservoir reservoir = reservoir_;
    std::uint32_t ended = endedBlocks_;
    const BandTable& table = acTable_[0];
    const int first = scan_.header.first, last = scan_.header.last, low = scan_.header.low;
    std::uint64_t* const nonZero = components_[0]->nonZero(run.row);
    std::uint32_t column = run.first;
    const std::uint32_t end = run.first + run.count;
    while (column < end) {
        if (ended != 0) {
            const std::uint32_t skipped = std::min(ended, end - column);
            ended -= skipped;
            column += skipped;
            continue;
        }
        if (!mayDecode(reservoir))
            return false;
        std::int16_t* const block = components_[0]->block(run.row, column);
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
        nonZero[column] |= found;
        ++column;
    }
    reservoir_ = reservoir;
    endedBlocks_ = ended;
    return true;
}

template <bool stores>
bool ProgressiveScan::refineAC(const Run& run) {
    Reservoir reservoir = reservoir_;
    std::uint32_t ended = endedBlocks_;
    const BandTable& table = acTable_[0];
    const int first = scan_.header.first, last = scan_.header.last, step = 1 << scan_.header.low;
    const std::uint64_t band = positionsFrom(first) & ~positionsFrom(last + 1);
    std::uint64_t* const nonZero = components_[0]->nonZero(run.row);
    const std::uint32_t end = run.first + run.count;
    for (std::uint32_t column = run.first; column < end; ++column) {
        std::uint64_t added = 0;
        const std::uint64_t zeros = band & ~nonZero[column];
        KnownCoefficients known(band & nonZero[column]);
        if (ended != 0 && known.isEmpty()) {
            --ended;
            continue;
        }
        if (!mayDecode(reservoir))
            return false;
        std::int16_t* const block = components_[0]->block(run.row, column);
        for (int position = first; ended == 0 && position <= last;) {
            reservoir.refill();
            BandEntry entry = table.entries[reservoir.bits >> (64 - BandTable::indexBits)];
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
            const int place = numberOfSetBit(zeros, position, entry.step());
            if (place > last)
                return false;
            known.take(reservoir, place - position - entry.step());
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
        nonZero[column] |= added;
    }
    reservoir_ = reservoir;
    endedBlocks_ = ended;
    return true;
}

} // namespace kestrine::jpeg
