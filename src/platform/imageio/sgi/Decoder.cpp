// Reads SGI files row by row.

#include "platform/host/BigEndian.h"
#include "platform/imageio/Codecs.h"
#include "platform/imageio/ForwardReader.h"
#include "platform/imageio/sgi/Header.h"

#include <algorithm>
#include <cstring>

namespace kestrine::sgi {

namespace {

Failure endedEarly() { return {Reason::truncated, "the SGI file ends before its last row"}; }

/// A row of one channel as it is stored: with the highest byte first.
class StoredRows {
public:
    StoredRows(std::shared_ptr<const ByteReader> reader, const Header& header)
        : reader_(reader), header_(header), codes_(std::move(reader)) {}

    /// Reads where the codes of each row begin.
    Result<void> readOffsets() {
        const std::uint64_t rows = header_.format.channels() * std::uint64_t{header_.format.height};
        if (reader_->size() < headerLength + rows * offsetLength)
            return endedEarly();
        offsets_.resize(static_cast<std::size_t>(rows) * offsetLength);
        if (reader_->readAt(headerLength, offsets_) != offsets_.size())
            return endedEarly();
        return {};
    }

    Result<void> read(std::size_t channel, std::uint32_t y, std::span<std::uint8_t> row) {
        const std::size_t place = channel * header_.format.height + header_.format.height - 1 - y;
        if (header_.isRunLength) {
            codes_.moveTo(bigEndian(ByteView(offsets_).subspan(place * offsetLength, offsetLength)));
            return decode(row);
        }
        if (reader_->readAt(headerLength + std::uint64_t{place} * row.size(), row) != row.size())
            return endedEarly();
        return {};
    }

private:
    static constexpr std::size_t offsetLength = 4;

    /// A code is as long as a sample. Its lowest 7 bits are a number of samples, which follow if the next
    /// bit is set; otherwise one sample follows for all of them. 0 ends the row; the rest of it is 0.
    Result<void> decode(std::span<std::uint8_t> row) {
        const std::size_t length = header_.format.bytesPerSample();
        while (!row.empty()) {
            std::array<std::uint8_t, 2> bytes{};
            const std::span<std::uint8_t> sample = std::span(bytes).first(length);
            if (codes_.read(sample) != length)
                return endedEarly();
            const unsigned code = sample.back();
            const std::span<std::uint8_t> part =
                row.first(std::min<std::size_t>((code & 0x7F) * length, row.size()));
            if (part.empty())
                break;
            if ((code & 0x80) != 0) {
                if (codes_.read(part) != part.size())
                    return endedEarly();
            } else {
                if (codes_.read(sample) != length)
                    return endedEarly();
                repeat(sample, part);
            }
            row = row.subspan(part.size());
        }
        std::ranges::fill(row, std::uint8_t{0});
        return {};
    }

    static void repeat(std::span<const std::uint8_t> sample, std::span<std::uint8_t> into) {
        if (sample.size() == 1)
            std::ranges::fill(into, sample[0]);
        else
            for (auto to = into.begin(); to != into.end();)
                to = std::ranges::copy(sample, to).out;
    }

    const std::shared_ptr<const ByteReader> reader_;
    const Header header_;
    ForwardReader codes_;
    Bytes offsets_; ///< by channel, then by row from the lowest
};

class Rows final : public RowSource {
public:
    Rows(std::unique_ptr<StoredRows> stored, const RowFormat& format)
        : RowSource(format), stored_(std::move(stored)), channel_(format.width * format.bytesPerSample()) {}

    Result<void> readRow(std::span<std::uint8_t> row) override {
        for (std::size_t channel = 0; channel < format().channels(); ++channel) {
            TRY(stored_->read(channel, y_, channel_));
            if (format().depth == SampleDepth::bits16)
                interleave16(channel, row);
            else
                interleave8(channel, row);
        }
        ++y_;
        return {};
    }

private:
    void interleave8(std::size_t channel, std::span<std::uint8_t> row) const {
        for (std::size_t x = 0, to = channel; to < row.size(); ++x, to += format().channels())
            row[to] = channel_[x];
    }

    void interleave16(std::size_t channel, std::span<std::uint8_t> row) const {
        const std::uint8_t* from = channel_.data();
        for (std::size_t to = 2 * channel; to < row.size(); to += format().bytesPerPixel(), from += 2) {
            const auto sample = static_cast<std::uint16_t>(from[0] << 8 | from[1]);
            std::memcpy(&row[to], &sample, sizeof sample);
        }
    }

    const std::unique_ptr<StoredRows> stored_;
    Bytes channel_; ///< a row of one channel
    std::uint32_t y_ = 0;
};

class Decoder final : public ImageDecoder {
public:
    Decoder(std::shared_ptr<const ByteReader> reader, const Header& header)
        : reader_(std::move(reader)), header_(header) {
        frames_.push_back({.format = header.format, .isUncompressed = !header.isRunLength});
    }

    Result<RowSourcePointer> rows(std::size_t, int) const override {
        auto stored = std::make_unique<StoredRows>(reader_, header_);
        if (header_.isRunLength)
            TRY(stored->readOffsets());
        return RowSourcePointer(std::make_unique<Rows>(std::move(stored), header_.format));
    }

private:
    const std::shared_ptr<const ByteReader> reader_;
    const Header header_;
};

Result<std::unique_ptr<ImageDecoder>> open(std::shared_ptr<const ByteReader> reader) {
    const Header header = TRY(readHeader(*reader));
    if (header.format.pixels() == 0)
        return Failure{Reason::empty, "the SGI has no pixels"};
    if (!header.format.isWithinLimits())
        return Failure{Reason::tooLarge, "the SGI picture has too many pixels"};
    return std::unique_ptr<ImageDecoder>(std::make_unique<Decoder>(std::move(reader), header));
}

} // namespace

const ImageCodec codec = {"SGI", isSGI, open};

} // namespace kestrine::sgi
