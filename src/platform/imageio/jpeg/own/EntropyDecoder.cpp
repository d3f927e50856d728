#include "platform/imageio/jpeg/own/EntropyDecoder.h"

#include <algorithm>
#include <limits>

namespace kestrine::jpeg {

bool EntropyDecoder::start(std::shared_ptr<const ByteReader> reader, const FrameHeader& header,
                           const std::array<bool, 3>& wantsAC) {
    if (!planBlocks(header, wantsAC))
        return false;
    bytes_.start(std::move(reader), header.scanOffset);
    beginSegment();
    restarts_ = RestartCounter(header.restartInterval);
    foundMeaninglessBits_ = false;
    return true;
}

bool EntropyDecoder::planBlocks(const FrameHeader& header, const std::array<bool, 3>& wantsAC) {
    groups_.assign(static_cast<std::size_t>(header.blocksPerMCU()), LaneGroup{});
    lastNonZero_ = {};
    blocks_.clear();
    for (std::size_t c = 0; c < header.componentCount; ++c) {
        const Component& component = header.components[c];
        const std::size_t dcCode = header.scan.dcCodes[c], acCode = header.scan.acCodes[c];
        const DCTable* const dcTable = dcTables_.assign(dcCode, *header.dcCodes[dcCode]);
        const ACTable* const acTable = acTables_.assign(acCode, *header.acCodes[acCode]);
        if (dcTable == nullptr || acTable == nullptr)
            return false;
        for (int i = 0; i < component.blocks(); ++i)
            blocks_.push_back({dcTable, acTable, groups_[blocks_.size()].coefficients[0], c, wantsAC[c]});
    }
    return true;
}

bool EntropyDecoder::decodeGroup(int lanes) {
    clearGroups();
    for (int lane = 0; lane < lanes;) {
        if (restarts_.isDue() && !passRestart())
            return false;
        const auto run = static_cast<int>(restarts_.take(static_cast<std::uint32_t>(lanes - lane)));
        if (!decodeRun(lane, run))
            return false;
        lane += run;
    }
    return bytes_.hasCovered(reservoir_);
}

/// Sets the AC coefficients of the last group to 0, up to the last one that was not 0.
void EntropyDecoder::clearGroups() {
    for (const Block& block : blocks_) {
        const auto last = static_cast<std::size_t>(lastNonZero_[block.component]);
        if (block.wantsAC)
            std::memset(block.coefficients + lanesOfGroup, 0,
                        placesUpTo[last] * sizeof LaneGroup::coefficients[0]);
    }
    lastNonZero_ = {};
}

bool EntropyDecoder::passRestart() {
    if (!bytes_.passRestart(reservoir_, restarts_.pass()))
        return false;
    beginSegment();
    return true;
}

bool EntropyDecoder::skipMCUs(std::uint64_t count) {
    for (; count > 0; count -= restarts_.interval())
        if (!bytes_.skipSegment(restarts_.pass()))
            return false;
    beginSegment();
    return true;
}

void EntropyDecoder::beginSegment() {
    reservoir_ = bytes_.firstBits();
    reservoir_.refill();
    predictors_ = {};
}

/// The usual numbers of blocks per MCU have unrolled code, so that the processor predicts the branches of
/// each block separately.
bool EntropyDecoder::decodeRun(int firstLane, int lanes) {
    switch (blocks_.size()) {
    case 1:
        return decodeMCUs(std::make_index_sequence<1>(), firstLane, lanes);
    case 3:
        return decodeMCUs(std::make_index_sequence<3>(), firstLane, lanes);
    case 4:
        return decodeMCUs(std::make_index_sequence<4>(), firstLane, lanes);
    case 6:
        return decodeMCUs(std::make_index_sequence<6>(), firstLane, lanes);
    default:
        return decodeMCUs(std::index_sequence<>(), firstLane, lanes);
    }
}

/// Without block numbers, the blocks are decoded in a loop.
template <std::size_t... numbers>
bool EntropyDecoder::decodeMCUs(std::index_sequence<numbers...>, int firstLane, int lanes) {
    // Local copies can stay in registers.
    Reservoir reservoir = reservoir_;
    std::array<int, 3> predictors = predictors_, lastNonZero = lastNonZero_;
    const std::uint8_t* limit = bytes_.mayStartBefore();
    int lane = firstLane;
    const auto decodes = [&](const Block& block) __attribute__((always_inline)) {
        const std::size_t c = block.component;
        const int last = block.wantsAC ? decodeBlock<true>(reservoir, *block.dcTable, *block.acTable,
                                                           block.coefficients + lane, predictors[c])
                                       : decodeBlock<false>(reservoir, *block.dcTable, *block.acTable,
                                                            block.coefficients + lane, predictors[c]);
        lastNonZero[c] = std::max(lastNonZero[c], last);
        return last >= 0;
    };
    for (; lane < firstLane + lanes; ++lane) {
        if (reservoir.next > limit) [[unlikely]] {
            Reservoir moved = reservoir;
            if (!bytes_.provide(moved))
                return false;
            reservoir = moved;
            limit = bytes_.mayStartBefore();
        }
        const bool isSound = sizeof...(numbers) != 0 ? (decodes(blocks_[numbers]) && ...)
                                                     : std::all_of(blocks_.begin(), blocks_.end(), decodes);
        if (!isSound) {
            foundMeaninglessBits_ = true;
            return false;
        }
    }
    reservoir_ = reservoir;
    predictors_ = predictors;
    lastNonZero_ = lastNonZero;
    // No picture has DC coefficients outside 16 bits. Refusing them keeps the sums from overflowing.
    return std::all_of(predictors.begin(), predictors.end(), [](int predictor) {
        return predictor >= std::numeric_limits<std::int16_t>::min()
               && predictor <= std::numeric_limits<std::int16_t>::max();
    });
}

} // namespace kestrine::jpeg
