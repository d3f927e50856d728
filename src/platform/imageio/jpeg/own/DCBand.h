// DCBand: the DC coefficients of one component in one band (row of MCUs) of a progressive JPEG.
#pragma once

#include "platform/imageio/jpeg/own/BlockDecoder.h"

#include <vector>

namespace kestrine::jpeg {

/// Blocks are numbered by row in the band and by column.
class DCBand {
public:
    /// `header` is the file's.
    void prepare(const FrameHeader& header, const Component& component) {
        blocksAcross_ = header.blocksAcross(component);
        blocksDown_ = header.blocksDown(component);
        columnsPerMCU_ = component.horizontal;
        rows_ = component.vertical;
        constexpr auto lanes = static_cast<std::uint32_t>(lanesOfGroup);
        groupsAcross_ = (header.mcusAcross() * columnsPerMCU_ + lanes - 1) / lanes;
        coefficients_.assign(std::size_t{rows_} * groupsAcross_ * lanes, 0);
    }

    /// Columns and rows of blocks that hold a part of the picture. There is room for whole MCUs and groups.
    std::uint32_t blocksAcross() const { return blocksAcross_; }
    std::uint32_t blocksDown() const { return blocksDown_; }
    std::uint32_t groupsAcross() const { return groupsAcross_; }
    std::uint32_t columnsPerMCU() const { return columnsPerMCU_; }
    std::uint32_t rows() const { return rows_; }

    /// The rows of this band that hold a part of the picture.
    std::uint32_t rowsInBand(std::uint32_t band) const { return std::min(rows_, blocksDown_ - band * rows_); }

    std::int16_t* row(std::uint32_t number) {
        return coefficients_.data() + std::size_t{number} * groupsAcross_ * lanesOfGroup;
    }

private:
    std::uint32_t blocksAcross_ = 0, blocksDown_ = 0, groupsAcross_ = 0, columnsPerMCU_ = 1, rows_ = 1;
    std::vector<std::int16_t> coefficients_;
};

} // namespace kestrine::jpeg
