#include "platform/imageio/tga/StoredRows.h"

#include "platform/imageio/ForwardReader.h"

#include <algorithm>
#include <array>
#include <vector>

namespace kestrine::tga {

namespace {

Failure endedInRows() { return {Reason::truncated, "the TGA file ends before its last row"}; }

class PlainRows final : public StoredRows {
public:
    PlainRows(std::shared_ptr<const ByteReader> reader, std::uint64_t offset)
        : reader_(std::move(reader)), offset_(offset) {}

    Result<void> read(std::uint32_t row, std::span<std::uint8_t> bytes) override {
        if (reader_->readAt(offset_ + row * std::uint64_t{bytes.size()}, bytes) != bytes.size())
            return endedInRows();
        return {};
    }

private:
    const std::shared_ptr<const ByteReader> reader_;
    const std::uint64_t offset_;
};

/// Decodes packets: a byte with the number of pixels less 1, whose highest bit is set if one pixel follows
/// for all of them. A packet may continue in the next row.
class RunLengthRows final : public StoredRows {
public:
    RunLengthRows(std::shared_ptr<const ByteReader> reader, const Header& header)
        : input_(std::move(reader), header.pixelOffset, bufferBytes), pixelBytes_(bytesOf(header.pixels)) {}

    /// Notes where each row begins, so that they can be read in any order.
    Result<void> findRows(const Header& header) {
        Bytes row(header.bytesPerStoredRow());
        for (std::uint32_t y = 0; y < header.format.height; ++y) {
            starts_.push_back({input_.offset(), packet_});
            TRY(decodeRow(row));
        }
        return {};
    }

    Result<void> read(std::uint32_t row, std::span<std::uint8_t> bytes) override {
        if (!starts_.empty()) {
            input_.moveTo(starts_[row].offset);
            packet_ = starts_[row].packet;
        }
        return decodeRow(bytes);
    }

private:
    static constexpr std::size_t bufferBytes = std::size_t{64} << 10;
    static constexpr std::uint8_t runMark = 0x80;

    struct Packet {
        std::uint8_t left = 0; ///< pixels
        bool isRun = false;
        std::array<std::uint8_t, 4> pixel{}; ///< of a run
    };
    struct Start {
        std::uint64_t offset;
        Packet packet; ///< that the row before has not used up
    };

    Result<void> decodeRow(std::span<std::uint8_t> row) {
        while (!row.empty()) {
            if (packet_.left == 0)
                TRY(beginPacket());
            const std::size_t pixels = std::min<std::size_t>(packet_.left, row.size() / pixelBytes_);
            const std::span<std::uint8_t> part = row.first(pixels * pixelBytes_);
            if (packet_.isRun)
                repeatPixel(part);
            else if (input_.read(part) != part.size())
                return endedInRows();
            packet_.left = static_cast<std::uint8_t>(packet_.left - pixels);
            row = row.subspan(part.size());
        }
        return {};
    }

    Result<void> beginPacket() {
        const int code = input_.next();
        if (code < 0)
            return endedInRows();
        packet_.left = static_cast<std::uint8_t>((code & ~runMark) + 1);
        packet_.isRun = (code & runMark) != 0;
        const auto pixel = std::span(packet_.pixel).first(pixelBytes_);
        if (packet_.isRun && input_.read(pixel) != pixel.size())
            return endedInRows();
        return {};
    }

    void repeatPixel(std::span<std::uint8_t> part) const {
        for (auto to = part.begin(); to != part.end();)
            to = std::copy_n(packet_.pixel.begin(), pixelBytes_, to);
    }

    ForwardReader input_;
    const std::size_t pixelBytes_;
    Packet packet_;
    std::vector<Start> starts_; ///< empty if the rows are read in stored order
};

} // namespace

Result<std::unique_ptr<StoredRows>> openStoredRows(std::shared_ptr<const ByteReader> reader,
                                                   const Header& header) {
    if (!header.isRunLength)
        return std::unique_ptr<StoredRows>(
            std::make_unique<PlainRows>(std::move(reader), header.pixelOffset));
    auto rows = std::make_unique<RunLengthRows>(std::move(reader), header);
    if (!header.isTopDown)
        TRY(rows->findRows(header));
    return std::unique_ptr<StoredRows>(std::move(rows));
}

} // namespace kestrine::tga
