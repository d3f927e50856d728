// Reads portable bitmaps, greymaps, pixmaps, arbitrary and floating-point maps row by row. Samples are scaled
// to the full range of 8 or 16 bits.

#include "platform/host/BigEndian.h"
#include "platform/host/LittleEndian.h"
#include "platform/imageio/Codecs.h"
#include "platform/imageio/pnm/Header.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>

namespace kestrine::pnm {

namespace {

Failure endedInSamples() { return {Reason::truncated, "the portable map ends before its last sample"}; }

/// The scaled value of every sample from 0 to the largest one: 0 to 255 or to 65535, rounded.
std::vector<std::uint16_t> scaledSamples(const Header& header) {
    const std::uint64_t full = header.format.depth == SampleDepth::bits16 ? 65535 : 255;
    std::vector<std::uint16_t> scaled(header.largest + 1);
    for (std::uint32_t sample = 0; sample <= header.largest; ++sample)
        scaled[sample] = static_cast<std::uint16_t>((sample * full + header.largest / 2) / header.largest);
    return scaled;
}

class Rows final : public RowSource {
public:
    Rows(std::unique_ptr<ForwardReader> input, const Header& header)
        : RowSource(header.format), input_(std::move(input)), header_(header), scaled_(scaledSamples(header)),
          bits_((header.format.width + 7) / 8), firstRow_(input_->offset()) {}

    Result<void> readRow(std::span<std::uint8_t> row) override {
        switch (header_.samples) {
        case Samples::textBits:
            return readTextBits(row);
        case Samples::text:
            return readText(row);
        case Samples::bits:
            return readBits(row);
        case Samples::bytes:
            return readBytes(row);
        case Samples::floats:
            return readFloats(row);
        }
        return endedInSamples();
    }

private:
    bool isWide() const { return format().depth == SampleDepth::bits16; }

    void store(std::uint32_t sample, std::uint8_t* into) const {
        const std::uint16_t scaled = scaled_[std::min(sample, header_.largest)];
        if (isWide())
            std::memcpy(into, &scaled, sizeof scaled);
        else
            *into = static_cast<std::uint8_t>(scaled);
    }

    Result<void> readTextBits(std::span<std::uint8_t> row) {
        for (std::uint8_t& sample : row) {
            const int digit = nextCharacter(*input_);
            if (digit < 0)
                return endedInSamples();
            if (digit != '0' && digit != '1')
                return Failure{Reason::malformed,
                               "the portable bitmap contains something other than 0 and 1"};
            sample = digit == '0' ? 255 : 0;
        }
        return {};
    }

    Result<void> readText(std::span<std::uint8_t> row) {
        for (std::size_t i = 0; i < row.size(); i += format().bytesPerSample())
            store(TRY(readNumber(*input_)), &row[i]);
        return {};
    }

    Result<void> readBits(std::span<std::uint8_t> row) {
        if (input_->read(bits_) != bits_.size())
            return endedInSamples();
        for (std::size_t x = 0; x < row.size(); ++x)
            row[x] = bits_[x / 8] >> (7 - x % 8) & 1 ? 0 : 255;
        return {};
    }

    Result<void> readBytes(std::span<std::uint8_t> row) {
        if (input_->read(row) != row.size())
            return endedInSamples();
        if (isWide())
            for (std::size_t i = 0; i < row.size(); i += 2)
                store(std::uint32_t{row[i]} << 8 | row[i + 1], &row[i]);
        else if (header_.largest != 255)
            for (std::uint8_t& sample : row)
                store(sample, &sample);
        return {};
    }

    Result<void> readFloats(std::span<std::uint8_t> row) {
        floats_.resize(2 * row.size());
        input_->moveTo(firstRow_ + (format().height - 1 - y_++) * std::uint64_t{floats_.size()});
        if (input_->read(floats_) != floats_.size())
            return endedInSamples();
        for (std::size_t i = 0; i < row.size(); i += 2) {
            const ByteView stored = ByteView(floats_).subspan(2 * i, 4);
            const auto bits = static_cast<std::uint32_t>(header_.hasLowByteFirst ? littleEndian(stored)
                                                                                 : bigEndian(stored));
            const auto value = std::bit_cast<float>(bits);
            const float share = value > 0 ? std::min(value, 1.0f) : 0;
            const auto sample = static_cast<std::uint16_t>(std::lround(share * 65535));
            std::memcpy(&row[i], &sample, sizeof sample);
        }
        return {};
    }

    const std::unique_ptr<ForwardReader> input_;
    const Header header_;
    const std::vector<std::uint16_t> scaled_; ///< by sample
    Bytes bits_;
    Bytes floats_; ///< of a row
    const std::uint64_t firstRow_;
    std::uint32_t y_ = 0; ///< of the next row of a floating-point map
};

class Decoder final : public ImageDecoder {
public:
    Decoder(std::shared_ptr<const ByteReader> reader, const Header& header, std::uint64_t sampleOffset)
        : reader_(std::move(reader)), header_(header), sampleOffset_(sampleOffset) {
        frames_.push_back(
            {.format = header.format,
             .isUncompressed = header.samples == Samples::bytes || header.samples == Samples::floats,
             .storedBitsPerPixel = header.samples == Samples::bits ? 1u : 0u});
    }

    Result<RowSourcePointer> rows(std::size_t, int) const override {
        return RowSourcePointer(
            std::make_unique<Rows>(std::make_unique<ForwardReader>(reader_, sampleOffset_), header_));
    }

private:
    const std::shared_ptr<const ByteReader> reader_;
    const Header header_;
    const std::uint64_t sampleOffset_;
};

Result<std::unique_ptr<ImageDecoder>> open(std::shared_ptr<const ByteReader> reader) {
    ForwardReader input(reader);
    const Header header = TRY(readHeader(input));
    if (header.format.pixels() == 0)
        return Failure{Reason::empty, "the portable map has no pixels"};
    if (!header.format.isWithinLimits())
        return Failure{Reason::tooLarge, "the portable map has too many pixels"};
    return std::unique_ptr<ImageDecoder>(
        std::make_unique<Decoder>(std::move(reader), header, input.offset()));
}

} // namespace

const ImageCodec codec = {"PNM", isPNM, open};

} // namespace kestrine::pnm
