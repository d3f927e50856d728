#include "platform/imageio/jpeg/own/ProgressiveScan.h"

#include "platform/imageio/jpeg/own/BandBlock.h"

#include <algorithm>

namespace kestrine::jpeg {

namespace {

/// There is one window for each scan.
constexpr std::size_t windowOfScan = 16 * 1024;

/// Bits of the coefficients of a scan. Shifted they fit 16 bits, so that none becomes 0.
int largestSize(const Scan& scan) {
    return scan.isRefinement() ? 1 : std::min(BandTable::largestSize, 15 - scan.header.low);
}

Band bandOf(const ScanHeader& scan, const BandTable& table) {
    return {table, scan.first, scan.last, 1 << scan.low,
            positionsFrom(scan.first) & ~positionsFrom(scan.last + 1)};
}

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

template <bool stores>
bool ProgressiveScan::decodeFirstAC(BlockStrip& strip, std::uint32_t first, std::uint32_t count) {
    Reservoir reservoir = reservoir_;
    std::uint32_t ended = endedBlocks_;
    const Band band = bandOf(scan_.header, acTable_[0]);
    for (std::uint32_t number = first; number < first + count;) {
        if (ended != 0) {
            const std::uint32_t skipped = std::min(ended, first + count - number);
            ended -= skipped;
            number += skipped;
            continue;
        }
        if (!mayDecode(reservoir)
            || !takeFirstBits<stores>(reservoir, band, strip.block(number), strip.nonZero(number), ended))
            return false;
        ++number;
    }
    reservoir_ = reservoir;
    endedBlocks_ = ended;
    return true;
}

template <bool stores>
bool ProgressiveScan::refineAC(BlockStrip& strip, std::uint32_t first, std::uint32_t count) {
    Reservoir reservoir = reservoir_;
    std::uint32_t ended = endedBlocks_;
    const Band band = bandOf(scan_.header, acTable_[0]);
    for (std::uint32_t number = first; number < first + count; ++number) {
        std::uint64_t& nonZero = strip.nonZero(number);
        if (ended != 0 && (nonZero & band.positions) == 0)
            --ended;
        else if (!mayDecode(reservoir)
                 || !refineBlock<stores>(reservoir, band, strip.block(number), nonZero, ended))
            return false;
    }
    reservoir_ = reservoir;
    endedBlocks_ = ended;
    return true;
}

} // namespace kestrine::jpeg
