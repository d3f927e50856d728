// Reads the merged picture of PSD and PSB files row by row.

#include "platform/coregraphics/ColorConversion.h"
#include "platform/host/BigEndian.h"
#include "platform/imageio/Codecs.h"
#include "platform/imageio/exif/ExifFacts.h"
#include "platform/imageio/psd/MatteRemoval.h"
#include "platform/imageio/psd/Planes.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>

namespace kestrine::psd {

namespace {

template <class Sample>
constexpr Sample maximum = std::numeric_limits<Sample>::max();

/// One stored sample. Floats are limited to 0 to 1; not-a-number is 0.
std::uint8_t sampleAt(const std::uint8_t* stored, unsigned, std::uint8_t) { return *stored; }
std::uint16_t sampleAt(const std::uint8_t* stored, unsigned bits, std::uint16_t) {
    if (bits == 16)
        return static_cast<std::uint16_t>(stored[0] << 8 | stored[1]);
    const auto value = std::bit_cast<float>(static_cast<std::uint32_t>(bigEndian(ByteView(stored, 4))));
    const float share = value > 0 ? std::min(value, 1.0f) : 0;
    return static_cast<std::uint16_t>(std::lround(share * float{maximum<std::uint16_t>}));
}

/// The converter for models that need one, else null.
std::unique_ptr<ForeignConverter> converterFor(const Header& header) {
    if (header.model != Model::cmyk && header.model != Model::lab)
        return nullptr;
    const ForeignModel model = header.model == Model::cmyk ? ForeignModel::cmykInverted : ForeignModel::lab;
    return ForeignConverter::create(model, header.format.depth, header.format.hasAlpha, header.resources.icc);
}

/// Grey, RGB, CMYK and Lab.
template <class Sample>
class SampleRows final : public RowSource {
public:
    SampleRows(std::vector<std::unique_ptr<Plane>> planes, std::shared_ptr<const Header> header)
        : RowSource(header->format), planes_(std::move(planes)), header_(std::move(header)),
          converter_(converterFor(*header_)), stored_(header_->bytesPerStoredRow()),
          pixels_(planes_.size() * format().width) {}

    Result<void> readRow(std::span<std::uint8_t> row) override {
        for (std::size_t plane = 0; plane < planes_.size(); ++plane) {
            TRY(planes_[plane]->readRow(stored_));
            interleave(plane);
        }
        if (format().hasAlpha)
            removeWhite(std::span(pixels_), planes_.size(), header_->model == Model::lab);
        const auto* bytes = reinterpret_cast<const std::uint8_t*>(pixels_.data());
        if (converter_ == nullptr) {
            std::copy_n(bytes, row.size(), row.begin());
            return {};
        }
        if (header_->model == Model::lab)
            makeSigned();
        converter_->convert(bytes, row.data(), format().width);
        return {};
    }

private:
    void interleave(std::size_t plane) {
        const std::uint8_t* from = stored_.data();
        for (std::size_t to = plane; to < pixels_.size(); to += planes_.size(), from += header_->bits / 8)
            pixels_[to] = sampleAt(from, header_->bits, Sample{});
    }

    /// a and b are stored with an offset of half their range.
    void makeSigned() {
        constexpr Sample half = maximum<Sample> / 2 + 1;
        for (std::size_t at = 0; at < pixels_.size(); at += planes_.size()) {
            pixels_[at + 1] ^= half;
            pixels_[at + 2] ^= half;
        }
    }

    const std::vector<std::unique_ptr<Plane>> planes_;
    const std::shared_ptr<const Header> header_;
    const std::unique_ptr<ForeignConverter> converter_;
    Bytes stored_;               ///< a row of one plane
    std::vector<Sample> pixels_; ///< a row
};

class BitRows final : public RowSource {
public:
    BitRows(std::unique_ptr<Plane> plane, const Header& header)
        : RowSource(header.format), plane_(std::move(plane)), stored_(header.bytesPerStoredRow()) {}

    Result<void> readRow(std::span<std::uint8_t> row) override {
        TRY(plane_->readRow(stored_));
        for (std::size_t x = 0; x < row.size(); ++x)
            row[x] = (stored_[x / 8] << x % 8 & 0x80) != 0 ? 0 : 255;
        return {};
    }

private:
    const std::unique_ptr<Plane> plane_;
    Bytes stored_;
};

class IndexedRows final : public RowSource {
public:
    IndexedRows(std::unique_ptr<Plane> plane, std::shared_ptr<const Header> header)
        : RowSource(header->format), plane_(std::move(plane)), header_(std::move(header)),
          indices_(header_->bytesPerStoredRow()) {}

    Result<void> readRow(std::span<std::uint8_t> row) override {
        TRY(plane_->readRow(indices_));
        auto to = row.begin();
        for (const std::uint8_t index : indices_) {
            to = std::copy_n(header_->palette.begin() + 3 * index, 3, to);
            if (format().hasAlpha)
                *to++ = index == header_->resources.transparentIndex ? 0 : 255;
        }
        return {};
    }

private:
    const std::unique_ptr<Plane> plane_;
    const std::shared_ptr<const Header> header_;
    Bytes indices_;
};

class Decoder final : public ImageDecoder {
public:
    Decoder(std::shared_ptr<const ByteReader> reader, Header header)
        : reader_(std::move(reader)), header_(std::make_shared<const Header>(std::move(header))) {
        frames_.push_back(
            {.format = deliveredFormat(),
             .resolution = header_->resources.resolution,
             .profile = deliveredProfile(),
             .isUncompressed = !header_->isRunLength,
             .storedBitsPerPixel = header_->bits * static_cast<unsigned>(header_->usedPlanes())});
    }

    Result<RowSourcePointer> rows(std::size_t, int) const override {
        std::vector<std::unique_ptr<Plane>> planes = TRY(openPlanes(reader_, *header_));
        if (header_->model == Model::bits)
            return RowSourcePointer(std::make_unique<BitRows>(std::move(planes.front()), *header_));
        if (header_->model == Model::indexed)
            return RowSourcePointer(std::make_unique<IndexedRows>(std::move(planes.front()), header_));
        if (header_->bits == 8)
            return RowSourcePointer(std::make_unique<SampleRows<std::uint8_t>>(std::move(planes), header_));
        RowSourcePointer rows = std::make_unique<SampleRows<std::uint16_t>>(std::move(planes), header_);
        if (!isLinear())
            return rows;
        const ColorProfile profile = linearProfile();
        return rowsInSRGB(std::move(rows), &profile);
    }

    Result<Bytes> exif() const override { return uprightExif(header_->resources.exif); }

    FileContents contents() const override {
        const std::uint32_t layers = header_->layers.count;
        return layers == 0 ? FileContents{} : FileContents{FileContents::Kind::layers, layers};
    }

    Result<Bytes> colorTable() const override {
        return header_->format.hasAlpha ? Bytes{} : header_->palette;
    }

private:
    /// Floats are linear light.
    bool isLinear() const { return header_->bits == 32; }

    /// Converted to sRGB, grey becomes RGB.
    RowFormat deliveredFormat() const {
        RowFormat format = header_->format;
        if (isLinear())
            format.model = ColorModel::rgb;
        return format;
    }

    std::optional<ColorProfile> storedProfile() const {
        return ColorProfile::fromICC(header_->resources.icc, header_->format.model);
    }

    ColorProfile linearProfile() const {
        return storedProfile().value_or(
            *ColorProfile::fromGamma(1, sRGBChromaticities, header_->format.model));
    }

    std::optional<ColorProfile> deliveredProfile() const {
        const bool isConverted = header_->model == Model::cmyk || header_->model == Model::lab || isLinear();
        return isConverted ? ColorProfile::sRGB() : storedProfile();
    }

    const std::shared_ptr<const ByteReader> reader_;
    const std::shared_ptr<const Header> header_;
};

Result<std::unique_ptr<ImageDecoder>> open(std::shared_ptr<const ByteReader> reader) {
    Header header = TRY(readHeader(reader));
    if (header.format.pixels() == 0)
        return Failure{Reason::empty, "the PSD has no pixels"};
    if (!header.format.isWithinLimits())
        return Failure{Reason::tooLarge, "the PSD picture has too many pixels"};
    return std::unique_ptr<ImageDecoder>(std::make_unique<Decoder>(std::move(reader), std::move(header)));
}

} // namespace

const ImageCodec codec = {"PSD", isPSD, open};

} // namespace kestrine::psd
