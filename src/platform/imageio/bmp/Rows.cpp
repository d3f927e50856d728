#include "platform/imageio/bmp/Rows.h"

#include "platform/imageio/bmp/RunLength.h"

#include <algorithm>
#include <bit>

namespace kestrine::bmp {

namespace {

/// Reads uncompressed rows.
class StoredRows {
public:
    StoredRows(std::shared_ptr<const ByteReader> reader, const Header& header)
        : reader_(std::move(reader)), header_(header), bytes_(header.bytesPerStoredRow()) {}

    /// The stored bytes of row y from the top, valid until the next call.
    Result<ByteView> read(std::uint32_t y) {
        const std::uint64_t offset = header_.pixelOffset + header_.storedRow(y) * header_.stride();
        if (reader_->readAt(offset, bytes_) != bytes_.size())
            return Failure{Reason::truncated, "the BMP ends before its last row"};
        return ByteView(bytes_);
    }

private:
    const std::shared_ptr<const ByteReader> reader_;
    const Header header_;
    Bytes bytes_;
};

/// Turns indices into colours. Indices outside the palette are black.
class PaletteLookup {
public:
    explicit PaletteLookup(Bytes palette) : palette_(std::move(palette)) { palette_.resize(256 * 3); }

    void write(std::size_t index, std::uint8_t* pixel) const {
        std::copy_n(palette_.begin() + static_cast<std::ptrdiff_t>(3 * index), 3, pixel);
    }

private:
    Bytes palette_;
};

class IndexedRows final : public RowSource {
public:
    IndexedRows(std::shared_ptr<const ByteReader> reader, const Header& header)
        : RowSource(header.format()), stored_(std::move(reader), header), palette_(header.palette),
          bits_(header.bitsPerPixel) {}

    Result<void> readRow(std::span<std::uint8_t> row) override {
        const ByteView bytes = TRY(stored_.read(next_++));
        const std::size_t perByte = 8 / bits_, mask = (std::size_t{1} << bits_) - 1;
        for (std::size_t x = 0; x < format().width; ++x) {
            const std::size_t shift = 8 - bits_ * (x % perByte + 1);
            palette_.write(bytes[x / perByte] >> shift & mask, &row[3 * x]);
        }
        return {};
    }

private:
    StoredRows stored_;
    const PaletteLookup palette_;
    const std::size_t bits_;
    std::uint32_t next_ = 0;
};

class RunLengthRows final : public RowSource {
public:
    RunLengthRows(RunLength codes, const Header& header)
        : RowSource(header.format()), codes_(std::move(codes)), header_(header), palette_(header.palette),
          indices_(header.width) {}

    Result<void> readRow(std::span<std::uint8_t> row) override {
        TRY(codes_.readRow(header_.storedRow(next_++), indices_));
        for (std::size_t x = 0; x < indices_.size(); ++x)
            palette_.write(indices_[x], &row[3 * x]);
        return {};
    }

private:
    RunLength codes_;
    const Header header_;
    const PaletteLookup palette_;
    Bytes indices_;
    std::uint32_t next_ = 0;
};

class BlueGreenRedRows final : public RowSource {
public:
    BlueGreenRedRows(std::shared_ptr<const ByteReader> reader, const Header& header)
        : RowSource(header.format()), stored_(std::move(reader), header) {}

    Result<void> readRow(std::span<std::uint8_t> row) override {
        const ByteView bytes = TRY(stored_.read(next_++));
        for (std::size_t i = 0; i < row.size(); i += 3) {
            row[i] = bytes[i + 2];
            row[i + 1] = bytes[i + 1];
            row[i + 2] = bytes[i];
        }
        return {};
    }

private:
    StoredRows stored_;
    std::uint32_t next_ = 0;
};

/// The bits of a pixel that a mask selects, scaled to 0..255. Only the upper 16 bits of wider masks count.
class MaskedChannel {
public:
    explicit MaskedChannel(std::uint32_t mask) {
        const int bits = std::popcount(mask), dropped = std::max(bits - 16, 0);
        mask_ = (std::uint32_t{1} << (bits - dropped)) - 1;
        shift_ = mask == 0 ? 0 : std::countr_zero(mask) + dropped;
        for (std::uint32_t value = 0; value <= mask_; ++value)
            samples_.push_back(
                static_cast<std::uint8_t>(mask_ == 0 ? 0 : (value * 255u + mask_ / 2) / mask_));
    }

    std::uint8_t sample(std::uint32_t pixel) const { return samples_[pixel >> shift_ & mask_]; }

private:
    std::uint32_t mask_;
    int shift_;
    Bytes samples_;
};

class MaskedRows final : public RowSource {
public:
    MaskedRows(std::shared_ptr<const ByteReader> reader, const Header& header)
        : RowSource(header.format()), stored_(std::move(reader), header),
          bytesPerPixel_(header.bitsPerPixel / 8) {
        for (std::size_t c = 0; c < format().channels(); ++c)
            channels_.emplace_back(header.masks[c]);
    }

    Result<void> readRow(std::span<std::uint8_t> row) override {
        const ByteView bytes = TRY(stored_.read(next_++));
        auto sample = row.begin();
        for (std::size_t i = 0; i < bytes.size(); i += bytesPerPixel_) {
            const std::uint32_t pixel = pixelAt(bytes.data() + i);
            for (const MaskedChannel& channel : channels_)
                *sample++ = channel.sample(pixel);
        }
        return {};
    }

private:
    std::uint32_t pixelAt(const std::uint8_t* bytes) const {
        const std::uint32_t low = bytes[0] | std::uint32_t{bytes[1]} << 8;
        return bytesPerPixel_ == 2 ? low
                                   : low | std::uint32_t{bytes[2]} << 16 | std::uint32_t{bytes[3]} << 24;
    }

    StoredRows stored_;
    const std::size_t bytesPerPixel_;
    std::vector<MaskedChannel> channels_;
    std::uint32_t next_ = 0;
};

} // namespace

Result<RowSourcePointer> rowsOfBMP(std::shared_ptr<const ByteReader> reader, const Header& header) {
    if (header.isRunLength) {
        RunLength codes = TRY(RunLength::open(std::move(reader), header));
        return RowSourcePointer(std::make_unique<RunLengthRows>(std::move(codes), header));
    }
    if (header.isIndexed())
        return RowSourcePointer(std::make_unique<IndexedRows>(std::move(reader), header));
    if (header.bitsPerPixel == 24)
        return RowSourcePointer(std::make_unique<BlueGreenRedRows>(std::move(reader), header));
    return RowSourcePointer(std::make_unique<MaskedRows>(std::move(reader), header));
}

} // namespace kestrine::bmp
