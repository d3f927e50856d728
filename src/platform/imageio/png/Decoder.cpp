// Reads PNG files of every colour type and depth, and their metadata; chooses between the fast decoder
// (fast/) and libpng.
#include "platform/coregraphics/ToneMapping.h"
#include "platform/host/BigEndian.h"
#include "platform/imageio/Codecs.h"
#include "platform/imageio/HeldReader.h"
#include "platform/imageio/exif/ExifFacts.h"
#include "platform/imageio/png/ChunkOrder.h"
#include "platform/imageio/png/ChunkSearch.h"
#include "platform/imageio/png/InterlacedRows.h"
#include "platform/imageio/png/LibraryReader.h"
#include "platform/imageio/png/LibraryRows.h"
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
constexpr std::string_view exifName = "eXIf", animationName = "acTL";

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

std::optional<ColorProfile> embeddedProfile(const LibraryReader& file, ColorModel model) {
    png_charp name = nullptr;
    png_bytep icc = nullptr;
    png_uint_32 length = 0;
    int method = 0;
    if (!libpng().getICCP(file.png(), file.info(), &name, &method, &icc, &length))
        return std::nullopt;
    return ColorProfile::fromICC(ByteView(icc, length), model);
}

/// The primaries in cHRM, or those of sRGB if there is no cHRM or it equals them within rounding.
Chromaticities storedPrimaries(const LibraryReader& file) {
    png_fixed_point v[8];
    if (!libpng().getCHRMFixed(file.png(), file.info(), &v[0], &v[1], &v[2], &v[3], &v[4], &v[5], &v[6],
                               &v[7]))
        return sRGBChromaticities;
    const auto point = [&](int i) {
        return Chromaticities::Point{v[2 * i] / double{PNG_FP_1}, v[2 * i + 1] / double{PNG_FP_1}};
    };
    const auto near = [](Chromaticities::Point a, Chromaticities::Point b) {
        constexpr double rounding = 0.001;
        return std::abs(a.x - b.x) <= rounding && std::abs(a.y - b.y) <= rounding;
    };
    const Chromaticities stored{.white = point(0), .red = point(1), .green = point(2), .blue = point(3)};
    const Chromaticities& standard = sRGBChromaticities;
    return near(stored.white, standard.white) && near(stored.red, standard.red)
                   && near(stored.green, standard.green) && near(stored.blue, standard.blue)
               ? standard
               : stored;
}

/// The profile that gAMA and cHRM describe; none when they describe sRGB. Primaries without a gamma are
/// ignored because the tone curve is unknown; for grey pictures only the gamma counts.
std::optional<ColorProfile> calibratedProfile(const LibraryReader& file, ColorModel model) {
    constexpr double standardGamma = 0.45455, tolerance = 0.01;
    png_fixed_point fixed = 0;
    if (!libpng().getGAMAFixed(file.png(), file.info(), &fixed) || fixed <= 0)
        return std::nullopt;
    const double gamma = fixed / double{PNG_FP_1};
    const Chromaticities primaries = model == ColorModel::gray ? sRGBChromaticities : storedPrimaries(file);
    if (std::abs(gamma / standardGamma - 1) <= tolerance && primaries == sRGBChromaticities)
        return std::nullopt;
    return ColorProfile::fromGamma(1 / gamma, primaries, model);
}

/// The code points in a cICP chunk; nullopt if there is none, or if they are unspecified or not permitted in
/// PNG.
std::optional<CodingPoints> storedPoints(const ByteReader& file) {
    constexpr std::uint16_t unspecified = 2, ofRGB = 0;
    const Bytes content = chunkContent(file, "cICP", signatureBytes, SearchEnd::atPixels);
    if (content.size() != 4)
        return std::nullopt;
    const CodingPoints points{content[0], content[1], content[2], content[3] == 1};
    const bool saysSomething = points.primaries != unspecified || points.transfer != unspecified;
    return saysSomething && points.matrix == ofRGB && points.isFullRange ? std::optional(points)
                                                                         : std::nullopt;
}

/// The brightest pixel that a cLLI chunk states, in cd/m2; 0 if there is none.
double storedBrightness(const ByteReader& file) {
    constexpr double perUnit = 10000;
    const Bytes content = chunkContent(file, "cLLI", signatureBytes, SearchEnd::atPixels);
    return content.size() == 8 ? static_cast<double>(bigEndian(ByteView(content).first(4))) / perUnit : 0;
}

/// `points` take precedence over everything else.
std::optional<ColorProfile> storedProfile(const LibraryReader& file, ColorModel model, const ExifFacts& exif,
                                          const std::optional<CodingPoints>& points) {
    if (points)
        return profileOf(*points, model);
    if (std::optional<ColorProfile> profile = embeddedProfile(file, model))
        return profile;
    if (libpng().getValid(file.png(), file.info(), PNG_INFO_sRGB))
        return std::nullopt;
    if (libpng().getValid(file.png(), file.info(), PNG_INFO_gAMA))
        return calibratedProfile(file, model);
    if (exif.isAdobeRGB && model == ColorModel::rgb)
        return ColorProfile::adobeRGB();
    return std::nullopt;
}

Bytes storedColorTable(const LibraryReader& file) {
    png_colorp colors = nullptr;
    int count = 0;
    Bytes table;
    if (!file.isIndexed() || !libpng().getPLTE(file.png(), file.info(), &colors, &count))
        return table;
    for (int i = 0; i < count; ++i)
        table.insert(table.end(), {colors[i].red, colors[i].green, colors[i].blue});
    return table;
}

class Decoder final : public ImageDecoder {
public:
    /// The header of `file` must have been read.
    Decoder(std::shared_ptr<const ByteReader> reader, std::unique_ptr<LibraryReader> file)
        : reader_(std::move(reader)),
          exif_(chunkContent(*reader_, exifName, signatureBytes, SearchEnd::atPixels)),
          colorTable_(storedColorTable(*file)) {
        const RowFormat format = file->format();
        const ExifFacts exif = readExifFacts(exif_);
        if (exif_.empty())
            exif_ = chunkContent(*reader_, exifName, file->offsetOfPixels(), SearchEnd::atLastChunk);
        const std::optional<CodingPoints> points = storedPoints(*reader_);
        if (points)
            hdr_ = highRangeOf(*points, storedBrightness(*reader_));
        const Resolution resolution =
            exif.resolution ? *exif.resolution : storedResolution(*file).value_or(Resolution{});
        frames_.push_back({.format = format,
                           .resolution = resolution,
                           .profile = storedProfile(*file, format.model, exif, points),
                           .orientation = readExifFacts(exif_).orientation,
                           .storedBitsPerPixel = static_cast<unsigned>(file->storedBitsPerPixel())});
        file_.hold(std::move(file));
    }

    Result<RowSourcePointer> rows(std::size_t, int) const override {
        RowSourcePointer rows = TRY(storedRows());
        return hdr_ ? rowsInSDR(std::move(rows), *hdr_) : std::move(rows);
    }

    Result<Bytes> exif() const override { return exif_; }

    Result<Bytes> colorTable() const override { return colorTable_; }

    /// An animation announces itself, with the number of its frames, before the pixels.
    FileContents contents() const override {
        const Bytes control = chunkContent(*reader_, animationName, signatureBytes, SearchEnd::atPixels);
        const std::uint64_t frames = control.size() == 8 ? bigEndian(ByteView(control).first(4)) : 1;
        return FileContents::several(FileContents::Kind::animation, static_cast<std::uint32_t>(frames));
    }

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
    const Bytes colorTable_;
    std::optional<HighRange> hdr_; ///< for HDR pictures, which become SDR
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
