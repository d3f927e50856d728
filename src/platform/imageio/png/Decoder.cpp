// Reads PNG files of every colour type and depth, and their metadata; chooses between the fast decoder
// (fast/) and libpng.
#include "platform/host/BigEndian.h"
#include "platform/imageio/Codecs.h"
#include "platform/imageio/HeldReader.h"
#include "platform/imageio/exif/ExifFacts.h"
#include "platform/imageio/png/ChunkOrder.h"
#include "platform/imageio/png/ChunkSearch.h"
#include "platform/imageio/png/InterlacedRows.h"
#include "platform/imageio/png/LibraryReader.h"
#include "platform/imageio/png/LibraryRows.h"
#include "platform/imageio/png/StoredColors.h"
#include "platform/imageio/png/fast/FastRows.h"
#include "platform/imageio/png/fast/InflateLibrary.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace kestrine::png {

namespace {

constexpr std::array<std::uint8_t, signatureBytes> signature = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};

/// Deflate cannot shrink data by more than this factor.
constexpr std::uint64_t maximumDeflateRatio = 1032;

/// Pixels per metre are stored as a rounded whole number: 2835 stands for 72 pixels per inch, not for 72.009.
double perInch(std::uint32_t perMeter) {
    const double exact = perMeter * metresPerInch;
    const double whole = std::round(exact);
    return std::llround(whole / metresPerInch) == perMeter ? whole : exact;
}

std::optional<Resolution> storedResolution(const LibraryReader& file) {
    png_uint_32 horizontal = 0, vertical = 0;
    int unit = PNG_RESOLUTION_UNKNOWN;
    if (!libpng().getPHYs(file.png(), file.info(), &horizontal, &vertical, &unit)
        || unit != PNG_RESOLUTION_METER)
        return std::nullopt;
    return plausibleResolution(perInch(horizontal), perInch(vertical));
}

/// An animation announces itself, with the number of its frames, before the pixels.
FileContents storedContents(const ByteReader& bytes, const std::optional<Chunk>& animationControl) {
    const Bytes control = contentOfSize(8, bytes, animationControl);
    const std::uint64_t frames = control.empty() ? 1 : bigEndian(ByteView(control).first(4));
    return FileContents::several(FileContents::Kind::animation, static_cast<std::uint32_t>(frames));
}

/// The EXIF block after the pixels.
Bytes lateExif(const ByteReader& bytes, const LibraryReader& file) {
    const auto [exif] = findChunks(bytes, {"eXIf"}, file.offsetOfPixels(), SearchEnd::atLastChunk);
    return contentOf(bytes, exif);
}

class Decoder final : public ImageDecoder {
public:
    /// The header of `file` must have been read.
    Decoder(std::shared_ptr<const ByteReader> reader, std::unique_ptr<LibraryReader> file)
        : reader_(std::move(reader)) {
        const auto [exifChunk, codingPoints, lightLevel, animationControl] =
            findChunks(*reader_, {"eXIf", "cICP", "cLLI", "acTL"}, signatureBytes, SearchEnd::atPixels);
        exif_ = contentOf(*reader_, exifChunk);
        contents_ = storedContents(*reader_, animationControl);
        const ExifFacts exif = readExifFacts(exif_);
        colors_ = storedColors(*file, *reader_, {codingPoints, lightLevel}, exif);
        if (exif_.empty())
            exif_ = lateExif(*reader_, *file);
        const Resolution resolution =
            exif.resolution ? *exif.resolution : storedResolution(*file).value_or(Resolution{});
        frames_.push_back({.format = file->format(),
                           .resolution = resolution,
                           .profile = colors_.profile,
                           .orientation = readExifFacts(exif_).orientation,
                           .storedBitsPerPixel = static_cast<unsigned>(file->storedBitsPerPixel())});
        file_.hold(std::move(file));
    }

    Result<RowSourcePointer> rows(std::size_t, int) const override {
        RowSourcePointer rows = TRY(storedRows());
        return colors_.hdr ? rowsInSDR(std::move(rows), *colors_.hdr) : std::move(rows);
    }

    Result<Bytes> exif() const override { return exif_; }

    Result<Bytes> colorTable() const override { return colors_.table; }

    FileContents contents() const override { return contents_; }

private:
    Result<RowSourcePointer> storedRows() const {
        std::unique_ptr<LibraryReader> file = TRY(fileAtPixels());
        if (file->lacksTransparency())
            damage_->note({Reason::malformed, "the PNG picture is damaged: its transparency is lost"});
        if (RowSourcePointer fast = openFastRows(*file, reader_, damage_))
            return fast;
        if (file->isInterlaced())
            return RowSourcePointer(std::make_unique<InterlacedRows>(std::move(file), reader_));
        return RowSourcePointer(std::make_unique<LibraryRows>(std::move(file), damage_));
    }

    Result<std::unique_ptr<LibraryReader>> fileAtPixels() const {
        std::unique_ptr<LibraryReader> file = file_.take();
        if (file != nullptr)
            return file;
        file = std::make_unique<LibraryReader>(reader_);
        TRY(file->readHeader());
        if (!(file->format() == frames_.front().format))
            return Failure{Reason::malformed, "the PNG picture changed while it was read"};
        return file;
    }

    const std::shared_ptr<const ByteReader> reader_;
    Bytes exif_; ///< after the pixels, only its orientation counts for how they are shown
    StoredColors colors_;
    FileContents contents_;
    mutable HeldReader<LibraryReader> file_;
};

bool recognises(ByteView head) {
    return head.size() >= signature.size() && std::equal(signature.begin(), signature.end(), head.begin());
}

Result<std::unique_ptr<ImageDecoder>> open(std::shared_ptr<const ByteReader> reader) {
    auto file = std::make_unique<LibraryReader>(reader);
    TRY(file->readHeader());
    if (file->lacksTransparency()) {
        reader = withTransparencyAfterColors(std::move(reader));
        file = std::make_unique<LibraryReader>(reader);
        TRY(file->readHeader());
    }
    if (file->lacksColors()) {
        file = std::make_unique<LibraryReader>(reader, LibraryReader::Calibration::skipped);
        TRY(file->readHeader());
    }
    if (!file->format().isWithinLimits())
        return Failure{Reason::tooLarge, "the PNG picture has too many pixels"};
    if (file->storedBytes() > maximumDeflateRatio * reader->size())
        return Failure{Reason::truncated, "the PNG file is too short for its pixels"};
    return std::unique_ptr<ImageDecoder>(std::make_unique<Decoder>(std::move(reader), std::move(file)));
}

} // namespace

const ImageCodec codec{"PNG", recognises, open, [] {
                           (void)installedFunctions();
                           (void)inflateFunctions();
                       }};

} // namespace kestrine::png
