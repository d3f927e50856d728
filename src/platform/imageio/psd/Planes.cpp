#include "platform/imageio/psd/Planes.h"

#include "platform/imageio/psd/Fields.h"

#include <algorithm>

namespace kestrine::psd {

namespace {

Failure endedInPlane() { return {Reason::truncated, "the PSD file ends before its last row"}; }

class PlainPlane final : public Plane {
public:
    PlainPlane(std::shared_ptr<const ByteReader> reader, std::uint64_t offset)
        : reader_(std::move(reader)), offset_(offset) {}

    Result<void> readRow(std::span<std::uint8_t> row) override {
        if (reader_->readAt(offset_, row) != row.size())
            return endedInPlane();
        offset_ += row.size();
        return {};
    }

private:
    const std::shared_ptr<const ByteReader> reader_;
    std::uint64_t offset_;
};

/// Decodes PackBits. The lengths of the coded rows stand in a table before all planes.
class PackedPlane final : public Plane {
public:
    PackedPlane(std::shared_ptr<const ByteReader> reader, std::uint64_t lengthsOffset,
                std::size_t lengthBytes, std::uint64_t codesOffset)
        : lengths_(reader, lengthsOffset, 1024), lengthBytes_(lengthBytes),
          codes_(std::move(reader), codesOffset), offset_(codesOffset) {}

    Result<void> readRow(std::span<std::uint8_t> row) override {
        const std::optional<std::uint64_t> length = readNumber(lengths_, lengthBytes_);
        if (!length)
            return endedInPlane();
        codes_.moveTo(offset_);
        offset_ += *length;
        return unpack(row);
    }

private:
    /// Codes may say less than the row has, or more; the rest of it is 0.
    Result<void> unpack(std::span<std::uint8_t> row) {
        constexpr int noOperation = 128;
        while (!row.empty() && codes_.offset() < offset_) {
            const int code = codes_.next();
            if (code < 0)
                return endedInPlane();
            if (code == noOperation)
                continue;
            const auto count = static_cast<std::size_t>(code < noOperation ? code + 1 : 257 - code);
            const std::span<std::uint8_t> part = row.first(std::min(count, row.size()));
            if (code < noOperation) {
                if (codes_.read(part) != part.size())
                    return endedInPlane();
            } else {
                const int value = codes_.next();
                if (value < 0)
                    return endedInPlane();
                std::ranges::fill(part, static_cast<std::uint8_t>(value));
            }
            row = row.subspan(part.size());
        }
        std::ranges::fill(row, std::uint8_t{0});
        return {};
    }

    ForwardReader lengths_;
    const std::size_t lengthBytes_;
    ForwardReader codes_;
    std::uint64_t offset_; ///< of the codes of the next row
};

/// The sum of the lengths of the coded rows of a plane, which `input` reads; nullopt if the input ends.
std::optional<std::uint64_t> codedLength(ForwardReader& input, std::size_t lengthBytes, std::uint32_t rows) {
    std::uint64_t sum = 0;
    for (std::uint32_t y = 0; y < rows; ++y) {
        const std::optional<std::uint64_t> length = readNumber(input, lengthBytes);
        if (!length)
            return std::nullopt;
        sum += *length;
    }
    return sum;
}

} // namespace

Result<std::vector<std::unique_ptr<Plane>>> openPlanes(const std::shared_ptr<const ByteReader>& reader,
                                                       const Header& header) {
    const std::uint32_t rows = header.format.height;
    const std::size_t lengthBytes = header.isLarge ? 4 : 2;
    const std::uint64_t tableBytes = std::uint64_t{header.planes} * rows * lengthBytes;
    ForwardReader lengths(reader, header.pixelOffset);
    std::uint64_t offset = header.pixelOffset + (header.isRunLength ? tableBytes : 0);
    std::vector<std::unique_ptr<Plane>> planes;
    while (planes.size() < header.usedPlanes()) {
        if (!header.isRunLength) {
            planes.push_back(std::make_unique<PlainPlane>(reader, offset));
            offset += std::uint64_t{header.bytesPerStoredRow()} * rows;
            continue;
        }
        planes.push_back(std::make_unique<PackedPlane>(reader, lengths.offset(), lengthBytes, offset));
        const std::optional<std::uint64_t> length = codedLength(lengths, lengthBytes, rows);
        if (!length)
            return endedInPlane();
        offset += *length;
    }
    return planes;
}

} // namespace kestrine::psd
