#include "platform/imageio/bmp/RunLength.h"

#include <algorithm>

namespace kestrine::bmp {

namespace {

void put(std::span<std::uint8_t> indices, std::uint64_t x, int index) {
    if (x < indices.size())
        indices[static_cast<std::size_t>(x)] = static_cast<std::uint8_t>(index);
}

/// The upper or lower half of a byte that holds two indices.
int halfAt(int byte, unsigned place) { return place % 2 == 0 ? byte >> 4 : byte & 15; }

} // namespace

RunLength::RunLength(std::shared_ptr<const ByteReader> reader, const Header& header)
    : input_(std::move(reader), header.pixelOffset), isHalfByte_(header.bitsPerPixel == 4),
      starts_(header.height) {}

Result<RunLength> RunLength::open(std::shared_ptr<const ByteReader> reader, const Header& header) {
    RunLength codes(std::move(reader), header);
    TRY(codes.findRows(header.width));
    return codes;
}

/// Notes where each row begins. The marks at the very end may be missing.
Result<void> RunLength::findRows(std::uint32_t width) {
    std::uint64_t x = 0;
    for (std::uint64_t row = 0; row < starts_.size();) {
        starts_[static_cast<std::size_t>(row)] = {input_.offset(), x};
        const std::optional<End> end = decodeRow(x, {});
        if (end && end->isEndOfPicture)
            return {};
        if (!end && row + 1 == starts_.size() && x >= width)
            return {};
        if (!end)
            return Failure{Reason::truncated, "the BMP ends before its last row"};
        row += end->rowsUp;
        x = end->x;
    }
    return {};
}

Result<void> RunLength::readRow(std::size_t storedRow, std::span<std::uint8_t> indices) {
    std::ranges::fill(indices, std::uint8_t{0});
    const Start start = starts_[storedRow];
    if (start.offset == 0)
        return {};
    input_.moveTo(start.offset);
    std::uint64_t x = start.x;
    decodeRow(x, indices);
    return {};
}

/// Decodes from x to the end of the row and stores the indices; nullopt if the input ends before.
std::optional<RunLength::End> RunLength::decodeRow(std::uint64_t& x, std::span<std::uint8_t> indices) {
    for (;;) {
        const int count = input_.next(), value = input_.next();
        if (value < 0)
            return std::nullopt;
        if (count > 0) {
            for (unsigned i = 0; i < static_cast<unsigned>(count); ++i)
                put(indices, x++, isHalfByte_ ? halfAt(value, i) : value);
        } else if (value == 0) {
            return End{1, 0, false};
        } else if (value == 1) {
            return End{0, 0, true};
        } else if (value == 2) {
            const int right = input_.next(), up = input_.next();
            if (up < 0)
                return std::nullopt;
            x += static_cast<unsigned>(right);
            if (up > 0)
                return End{static_cast<unsigned>(up), x, false};
        } else if (!decodeLiteral(static_cast<unsigned>(value), x, indices)) {
            return std::nullopt;
        } else {
            x += static_cast<unsigned>(value);
        }
    }
}

/// Reads `count` uncompressed indices, which are padded to an even number of bytes.
bool RunLength::decodeLiteral(unsigned count, std::uint64_t x, std::span<std::uint8_t> indices) {
    const unsigned bytes = isHalfByte_ ? (count + 1) / 2 : count;
    int byte = 0;
    for (unsigned i = 0; i < count; ++i) {
        if (!isHalfByte_ || i % 2 == 0)
            byte = input_.next();
        if (byte < 0)
            return false;
        put(indices, x + i, isHalfByte_ ? halfAt(byte, i) : byte);
    }
    return bytes % 2 == 0 || input_.next() >= 0;
}

} // namespace kestrine::bmp
