// Reads JPEG 2000 files with OpenJPEG, in a container (JP2, JPX) or as a bare codestream (J2K), at full size
// or at the reduced size that the codestream offers. One row of tiles is held in memory; a picture without
// tiles is one tile.

#include "platform/coregraphics/PixelBuffer.h"
#include "platform/coregraphics/RowsAhead.h"
#include "platform/imageio/Codecs.h"
#include "platform/imageio/jp2/Codestream.h"
#include "platform/imageio/jp2/Components.h"

#include <algorithm>
#include <bit>
#include <string_view>

namespace kestrine::jp2 {

namespace {

/// The library holds each sample of a tile twice, with 32 bits each.
constexpr std::uint64_t heldBytesPerSample = 8;

std::uint32_t halved(std::uint64_t coordinate, int halvings) {
    return static_cast<std::uint32_t>((coordinate + (std::uint64_t{1} << halvings) - 1) >> halvings);
}

RowFormat reduced(RowFormat format, int halvings) {
    format.width = halved(format.width, halvings);
    format.height = halved(format.height, halvings);
    return format;
}

class Rows final : public RowSource {
public:
    Rows(std::unique_ptr<Codestream> codestream, const Components& components, int halvings)
        : RowSource(reduced(components.format, halvings)), codestream_(std::move(codestream)),
          halvings_(halvings), channels_(components.channels), pixels_(components) {}

    Result<void> readRow(std::span<std::uint8_t> row) override {
        while (y_ == band_.format.height)
            TRY(decodeBand());
        std::ranges::copy(band_.row(y_++), row.begin());
        return {};
    }

private:
    /// Decodes the next row of tiles, which gives no rows of pixels if it is low and the picture is reduced.
    Result<void> decodeBand() {
        const TileGrid& grid = codestream_->tiles();
        if (nextBand_ == grid.rows)
            return Failure{Reason::malformed, "the JPEG 2000 picture has too few tiles"};
        const std::uint32_t band = nextBand_++;
        RowFormat format = RowSource::format();
        format.height = rowsOf(grid.tile(0, band));
        band_ = PixelBuffer(format);
        y_ = 0;
        std::size_t offset = 0;
        for (std::uint32_t column = 0; column < grid.columns && format.height > 0; ++column) {
            const Area tile = grid.tile(column, band);
            const std::size_t bytes =
                (halved(tile.x1, halvings_) - halved(tile.x0, halvings_)) * format.bytesPerPixel();
            if (bytes != 0)
                TRY(decodeTile(column, band, offset, bytes));
            offset += bytes;
        }
        return {};
    }

    /// Writes `bytes` bytes of each row of the band, from `offset` on.
    Result<void> decodeTile(std::uint32_t column, std::uint32_t band, std::size_t offset, std::size_t bytes) {
        TRY(codestream_->decodeTile(column, band));
        const opj_image_t& image = codestream_->image();
        for (const Channel& channel : channels_)
            if (const opj_image_comp_t& component = image.comps[channel.component];
                component.data == nullptr || component.w == 0 || component.h == 0)
                return Failure{Reason::malformed, "a component of the JPEG 2000 picture is missing"};
        for (std::uint32_t y = 0; y < band_.format.height; ++y)
            pixels_.makeRow(image, y, band_.format.height, band_.row(y).subspan(offset, bytes));
        return {};
    }

    std::uint32_t rowsOf(const Area& tile) const {
        return halved(tile.y1, halvings_) - halved(tile.y0, halvings_);
    }

    const std::unique_ptr<Codestream> codestream_;
    const int halvings_;
    const std::vector<Channel> channels_;
    PixelMaker pixels_;
    PixelBuffer band_; ///< a row of tiles
    std::uint32_t nextBand_ = 0;
    std::uint32_t y_ = 0; ///< in the band
};

/// A pixel of the reduced picture covers whole pixels of the full one only if the grid's origin allows that.
int usableHalvings(const opj_image_t& image, int offered) {
    const int aligned = std::countr_zero(image.x0 | image.y0);
    return std::max(0, std::min({offered, aligned, 16}));
}

class Decoder final : public ImageDecoder {
public:
    Decoder(const Functions& library, std::shared_ptr<const ByteReader> reader, const Codestream& codestream,
            Components components)
        : library_(library), reader_(std::move(reader)), components_(std::move(components)) {
        const TileGrid& grid = codestream.tiles();
        const RowFormat& format = components_.format;
        const std::uint64_t heldRows = std::min(grid.height, format.height);
        const std::uint64_t bandBytes = heldRows * format.bytesPerRow();
        frames_.push_back({.format = format,
                           .profile = profileOf(components_),
                           .maxHalvings = usableHalvings(codestream.image(), grid.halvings),
                           .heldBytes = bandBytes
                                        + heldRows * std::min(grid.width, format.width)
                                              * codestream.image().numcomps * heldBytesPerSample});
    }

    Result<RowSourcePointer> rows(std::size_t, int halvings) const override {
        std::unique_ptr<Codestream> codestream =
            TRY(Codestream::open(library_, reader_, halvings, usefulThreads(components_.format)));
        const opj_image_t& image = codestream->image();
        if (image.x1 - image.x0 != components_.format.width
            || image.y1 - image.y0 != components_.format.height)
            return Failure{Reason::malformed, "the JPEG 2000 file changed while it was read"};
        return RowSourcePointer(std::make_unique<Rows>(std::move(codestream), components_, halvings));
    }

private:
    const Functions& library_;
    const std::shared_ptr<const ByteReader> reader_;
    const Components components_;
};

bool recognises(ByteView head) {
    using namespace std::string_view_literals;
    const std::string_view start(reinterpret_cast<const char*>(head.data()), head.size());
    return isBareCodestream(head) || start.starts_with("\0\0\0\x0cjP  \r\n\x87\n"sv);
}

Result<std::unique_ptr<ImageDecoder>> open(std::shared_ptr<const ByteReader> reader) {
    const Result<Functions>& library = installedFunctions();
    if (!library)
        return library.failure();
    std::shared_ptr<const ByteReader> stream = TRY(codestreamIn(reader));
    const std::unique_ptr<Codestream> codestream = TRY(Codestream::open(*library, stream, 0, 1));
    const opj_image_t& image = codestream->image();
    constexpr std::uint32_t highest = 0x7fff'ffff; // what the library can be asked to decode
    if (image.x1 <= image.x0 || image.y1 <= image.y0 || image.x1 > highest || image.y1 > highest)
        return Failure{Reason::tooLarge, "the JPEG 2000 picture lies outside of what can be decoded"};
    Container container = TRY(readContainer(*reader));
    Components components = TRY(componentsOf(image, std::move(container)));
    if (!components.format.isWithinLimits())
        return Failure{Reason::tooLarge, "the JPEG 2000 picture has too many pixels"};
    return std::unique_ptr<ImageDecoder>(
        std::make_unique<Decoder>(*library, std::move(stream), *codestream, std::move(components)));
}

} // namespace

const ImageCodec codec{"JPEG 2000", recognises, open, [] { (void)installedFunctions(); }};

} // namespace kestrine::jp2
