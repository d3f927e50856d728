// RunLength: decodes rows of run-length coded indices in any order. The picture is not held in memory: one
// pass over the codes notes where each row begins.
#pragma once

#include "platform/imageio/ForwardReader.h"
#include "platform/imageio/bmp/Header.h"

#include <vector>

namespace kestrine::bmp {

class RunLength {
public:
    /// Finds the rows. Fails when the codes end before the last row.
    static Result<RunLength> open(std::shared_ptr<const ByteReader> reader, const Header& header);

    /// Writes a row as one index per byte; `storedRow` counts in stored order. Pixels that the codes skip are
    /// 0; pixels past the end of the row are dropped.
    Result<void> readRow(std::size_t storedRow, std::span<std::uint8_t> indices);

private:
    /// Where the codes of a row begin. An offset of 0 means that the row has no codes.
    struct Start {
        std::uint64_t offset = 0, x = 0;
    };
    /// What ended the codes of a row: the next codes belong to a row `rowsUp` rows higher and begin at x.
    struct End {
        std::uint64_t rowsUp, x;
        bool isEndOfPicture;
    };

    RunLength(std::shared_ptr<const ByteReader> reader, const Header& header);
    Result<void> findRows(std::uint32_t width);
    std::optional<End> decodeRow(std::uint64_t& x, std::span<std::uint8_t> indices);
    bool decodeLiteral(unsigned count, std::uint64_t x, std::span<std::uint8_t> indices);

    ForwardReader input_;
    const bool isHalfByte_; ///< 4 bits per index, otherwise 8
    std::vector<Start> starts_;
};

} // namespace kestrine::bmp
