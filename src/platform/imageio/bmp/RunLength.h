// RunLength: rows of run-length coded indices in any order, without holding the picture: one pass over the
// codes notes where each row begins.
#pragma once

#include "platform/imageio/bmp/Header.h"
#include "platform/imageio/ForwardReader.h"

#include <vector>

namespace kestrine::bmp {

class RunLength {
public:
    /// Fails when the codes end before the picture does.
    static Result<RunLength> open(std::shared_ptr<const ByteReader> reader, const Header& header);

    /// Writes a row, counted as they are stored, as one index a byte. Pixels that the codes pass over are 0;
    /// those beyond the row's end are dropped.
    Result<void> readRow(std::size_t storedRow, std::span<std::uint8_t> indices);

private:
    /// Where the codes of a row begin; an offset of 0 means that it has none.
    struct Start {
        std::uint64_t offset = 0, x = 0;
    };
    /// What ended a row's codes: so many rows up, the next begins at x.
    struct End {
        std::uint64_t rowsUp, x;
        bool isEndOfPicture;
    };

    RunLength(std::shared_ptr<const ByteReader> reader, const Header& header);
    Result<void> findRows(std::uint32_t width);
    std::optional<End> decodeRow(std::uint64_t& x, std::span<std::uint8_t> indices);
    bool decodeLiteral(unsigned count, std::uint64_t x, std::span<std::uint8_t> indices);

    ForwardReader input_;
    const bool isHalfByte_; ///< 4 bits an index, else 8
    std::vector<Start> starts_;
};

} // namespace kestrine::bmp
