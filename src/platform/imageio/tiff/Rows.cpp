#include "platform/imageio/tiff/Rows.h"

#include "platform/coregraphics/ColorConversion.h"
#include "platform/coregraphics/Premultiplication.h"
#include "platform/coregraphics/RowsAhead.h"
#include "platform/imageio/tiff/Rendering.h"
#include "platform/imageio/tiff/Samples.h"
#include "platform/imageio/tiff/StoredRows.h"

#include <algorithm>
#include <cstring>
#include <limits>

namespace kestrine::tiff {

namespace {

using Planes = std::vector<std::unique_ptr<StoredRows>>;

/// The share of the rows of a page that is delivered: the page has bands of `rowsPerBand` rows; every
/// `parts`-th band, starting with band `part`, belongs to the share.
struct Share {
    std::uint32_t rowsPerBand = 1;
    std::uint32_t part = 0;
    std::uint32_t parts = 1;

    std::uint32_t firstRow() const { return part * rowsPerBand; }
    std::uint32_t rowAfter(std::uint32_t y) const {
        return (y + 1) % rowsPerBand == 0 ? y + 1 + (parts - 1) * rowsPerBand : y + 1;
    }
};

/// Rows whose stored bytes are the delivered ones.
class StoredAsDelivered final : public RowSource {
public:
    StoredAsDelivered(std::shared_ptr<const Page> page, Planes planes, const Share& share)
        : RowSource(page->format), planes_(std::move(planes)), share_(share), y_(share.firstRow()) {}

    Result<void> readRow(std::span<std::uint8_t> row) override {
        const Result<ByteView> stored = planes_.front()->row(y_);
        y_ = share_.rowAfter(y_);
        if (!stored)
            return stored.failure();
        std::memcpy(row.data(), stored->data(), row.size());
        return {};
    }

private:
    const Planes planes_;
    const Share share_;
    std::uint32_t y_;
};

/// The converter for page colours that need one, else null.
std::unique_ptr<ForeignConverter> converterFor(const Page& page) {
    switch (page.color) {
    case Color::cmyk:
        return ForeignConverter::create(ForeignModel::cmyk, page.format.depth, page.format.hasAlpha,
                                        page.icc);
    case Color::cieLab:
    case Color::iccLab:
        return ForeignConverter::create(ForeignModel::lab, page.format.depth, page.format.hasAlpha, page.icc);
    default:
        return nullptr;
    }
}

/// a and b of ICC's Lab are shifted by half their range; 16-bit L has its 100 at 0xFF00.
template <class Sample>
void makeCIELab(std::vector<Sample>& pixels, std::size_t channels) {
    constexpr Sample half = Sample{1} << (8 * sizeof(Sample) - 1);
    for (std::size_t at = 0; at < pixels.size(); at += channels) {
        pixels[at + 1] ^= half;
        pixels[at + 2] ^= half;
        if constexpr (sizeof(Sample) == 2)
            pixels[at] = static_cast<Sample>(std::min<std::uint32_t>((pixels[at] * 257u + 128) / 256, 65535));
    }
}

/// Rows of samples, converted in steps: unpack, select the samples used, divide by alpha, convert to grey or
/// RGB.
template <class Sample>
class SampleRows final : public RowSource {
public:
    SampleRows(std::shared_ptr<const Page> page, Planes planes, const Share& share)
        : RowSource(page->format), page_(std::move(page)), planes_(std::move(planes)), share_(share),
          y_(share.firstRow()), converter_(converterFor(*page_)),
          stored_(std::size_t{page_->format.width} * page_->samples / page_->planes()),
          pixels_(std::size_t{page_->format.width} * storedChannels()),
          delivered_(page_->format.samplesPerRow()) {}

    Result<void> readRow(std::span<std::uint8_t> row) override {
        for (unsigned plane = 0; plane < page_->planes(); ++plane) {
            if (!planes_[plane])
                continue;
            const ByteView packed = TRY(planes_[plane]->row(y_));
            unpack(packed);
            select(plane);
        }
        y_ = share_.rowAfter(y_);
        if (page_->isPremultiplied)
            undoPremultiplication(storedChannels(), pixels_);
        colorize();
        std::memcpy(row.data(), delivered_.data(), row.size());
        return {};
    }

private:
    /// Stored samples that are used: those of the colour, then alpha.
    std::size_t storedChannels() const { return page_->colorSamples() + (page_->alpha >= 0 ? 1 : 0); }

    void unpack(ByteView packed) {
        if constexpr (sizeof(Sample) == 2)
            if (page_->numbers == Numbers::reals)
                return unpackFloats(packed, page_->bits, stored_);
        unpackIntegers(packed, page_->bits, page_->color == Color::palette, stored_);
        if (page_->numbers == Numbers::signedIntegers && page_->color != Color::cieLab)
            shiftSigned(stored_);
    }

    /// Copies the samples of a plane to their places in the pixels.
    void select(unsigned plane) {
        const std::size_t channels = storedChannels(), colors = page_->colorSamples();
        for (std::size_t channel = 0; channel < channels; ++channel) {
            const std::size_t sample = channel < colors ? channel : static_cast<std::size_t>(page_->alpha);
            if (page_->isPlanar && sample != plane)
                continue;
            const Sample* from = stored_.data() + (page_->isPlanar ? 0 : sample);
            const std::size_t step = page_->isPlanar ? 1 : page_->samples;
            for (std::size_t to = channel; to < pixels_.size(); to += channels, from += step)
                pixels_[to] = *from;
        }
    }

    void colorize() {
        if (page_->color == Color::iccLab)
            makeCIELab(pixels_, storedChannels());
        if (converter_)
            converter_->convert(reinterpret_cast<const std::uint8_t*>(pixels_.data()),
                                reinterpret_cast<std::uint8_t*>(delivered_.data()), format().width);
        else if (page_->color == Color::palette)
            lookUpColors();
        else
            std::swap(pixels_, delivered_);
        if (page_->color == Color::whiteIsZero)
            for (std::size_t i = 0; i < delivered_.size(); i += format().channels())
                delivered_[i] = static_cast<Sample>(std::numeric_limits<Sample>::max() - delivered_[i]);
    }

    void lookUpColors() {
        const Sample* from = pixels_.data();
        for (auto to = delivered_.begin(); to != delivered_.end(); from += storedChannels()) {
            to = std::copy_n(page_->colors.begin() + 3 * from[0], 3, to);
            if (format().hasAlpha)
                *to++ = from[1];
        }
    }

    const std::shared_ptr<const Page> page_;
    const Planes planes_; ///< null for samples that are ignored
    const Share share_;
    std::uint32_t y_;
    const std::unique_ptr<ForeignConverter> converter_;
    std::vector<Sample> stored_;    ///< a row of one plane
    std::vector<Sample> pixels_;    ///< a row of the samples used of all planes
    std::vector<Sample> delivered_; ///< a row as delivered
};

/// Opens each plane that is used.
Result<Planes> openPlanes(const FileOpener& openFile, const Page& page) {
    Planes planes(page.planes());
    const std::uint64_t bits =
        std::uint64_t{page.format.width} * page.bits * (page.isPlanar ? 1 : page.samples);
    for (unsigned plane = 0; plane < planes.size(); ++plane) {
        const bool isIgnored = plane >= page.colorSamples() && static_cast<int>(plane) != page.alpha;
        if (page.isPlanar && isIgnored)
            continue;
        std::unique_ptr<File> file = TRY(openFile());
        std::unique_ptr<StoredRows> rows = StoredRows::create(std::move(file), page, plane);
        if (rows->rowBytes() < (bits + 7) / 8)
            return Failure{Reason::malformed, "the TIFF picture has rows that are too short for its pixels"};
        planes[plane] = std::move(rows);
    }
    return planes;
}

RowSourcePointer sampleRows(std::shared_ptr<const Page> page, Planes planes, const Share& share) {
    if (page->isDeliveredAsStored())
        return std::make_unique<StoredAsDelivered>(std::move(page), std::move(planes), share);
    if (page->format.depth == SampleDepth::bits8)
        return std::make_unique<SampleRows<std::uint8_t>>(std::move(page), std::move(planes), share);
    return std::make_unique<SampleRows<std::uint16_t>>(std::move(page), std::move(planes), share);
}

/// How the page is divided among threads: whole blocks per band, at least 128 KiB where there are enough.
Share sharesOf(const Page& page, const StoredRows& rows) {
    constexpr std::size_t enough = std::size_t{128} << 10;
    const std::uint32_t blockRows = rows.independentRows();
    const auto blocks = static_cast<std::uint32_t>(enough / (rows.rowBytes() * blockRows) + 1);
    const std::uint32_t rowsPerBand = blockRows * blocks;
    const bool isCutIntoBands = rowsPerBand < page.format.height && page.heldBytes == 0;
    return {rowsPerBand, 0,
            isCutIntoBands && !page.isUncompressed() ? static_cast<std::uint32_t>(usefulThreads(page.format))
                                                     : 1};
}

} // namespace

Result<RowSourcePointer> rowsOfTIFF(const FileOpener& openFile, const std::shared_ptr<const Page>& page) {
    if (page->color == Color::rendered) {
        std::unique_ptr<File> file = TRY(openFile());
        return renderedRowsOfTIFF(std::move(file), page);
    }
    std::vector<RowSourcePointer> parts;
    Share share;
    do {
        Planes planes = TRY(openPlanes(openFile, *page));
        if (parts.empty())
            share = sharesOf(*page, *planes.front());
        share.part = static_cast<std::uint32_t>(parts.size());
        parts.push_back(sampleRows(page, std::move(planes), share));
    } while (parts.size() < share.parts);
    return parts.size() == 1 ? std::move(parts.front()) : rowsInTurns(std::move(parts), share.rowsPerBand);
}

} // namespace kestrine::tiff
