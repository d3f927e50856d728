// BandCoefficients: the coefficients of one component in one band (row of MCUs) of a progressive JPEG. All
// scans add to them before they are transformed.
#pragma once

#include "platform/imageio/jpeg/own/BlockDecoder.h"

#include <vector>

namespace kestrine::jpeg {

/// Blocks are numbered by row in the band and by column. Sixteen neighbouring blocks of a row make a group.
class BandCoefficients {
public:
    /// All coefficients become 0. `mcusAcross` is the number of MCUs of a row in scans of all components.
    void prepare(const Component& component, std::uint32_t blocksAcross, std::uint32_t blocksDown,
                 std::uint32_t mcusAcross);

    /// Columns and rows of blocks that hold a part of the picture. There is room for whole MCUs.
    std::uint32_t blocksAcross() const { return blocksAcross_; }
    std::uint32_t blocksDown() const { return blocksDown_; }
    std::uint32_t rowsPerBand() const { return rows_; }
    std::uint32_t columnsPerMCU() const { return columnsPerMCU_; }
    std::uint32_t groupsAcross() const { return groupsAcross_; }

    LaneGroup& group(std::uint32_t row, std::uint32_t number) {
        return groups_[std::size_t{row} * groupsAcross_ + number];
    }

    /// The first coefficient of a block; for the offsets of the others see offsetAlongZigzag.
    std::int16_t* block(std::uint32_t row, std::uint32_t column) {
        return group(row, column / lanesOfGroup).coefficients[0] + column % lanesOfGroup;
    }

    /// For each block of a row the set of its AC coefficients that are not 0: bit k stands for position k
    /// along the zigzag.
    std::uint64_t* nonZero(std::uint32_t row) {
        return nonZero_.data() + std::size_t{row} * groupsAcross_ * lanesOfGroup;
    }

    /// The position along the zigzag after which all coefficients of the group are 0.
    int lastNonZero(std::uint32_t row, std::uint32_t group);

    /// Sets the coefficients of a group to 0. `last` is its lastNonZero(), or 0 if no AC coefficient was
    /// stored.
    void clear(std::uint32_t row, std::uint32_t group, int last);

private:
    std::uint32_t blocksAcross_ = 0, blocksDown_ = 0, rows_ = 0, columnsPerMCU_ = 1, groupsAcross_ = 0;
    std::vector<LaneGroup> groups_;
    std::vector<std::uint64_t> nonZero_;
};

} // namespace kestrine::jpeg
