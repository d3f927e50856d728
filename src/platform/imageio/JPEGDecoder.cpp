// Reads JPEG through libjpeg: baseline and progressive, grey, colour and CMYK, at full size or reduced in the
// transform.

#include "platform/coregraphics/ColorConversion.h"
#include "platform/imageio/Codecs.h"
#include "platform/imageio/ExifBlock.h"
#include "platform/imageio/JPEGInput.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace kestrine {

namespace {

/// A picture may be stored in many passes; more than this is an attempt to keep us busy.
constexpr int maximumScans = 500;
/// A progressive picture's coefficients are all held in memory at once.
constexpr std::uint64_t maximumCoefficientBytes = std::uint64_t{2} << 30;
/// Beyond this many they must also be plausible: Huffman coding spends at least a bit on a block's first
/// scan, and a block has 128 bytes of coefficients.
constexpr std::uint64_t freeCoefficientBytes = std::uint64_t{256} << 20;
constexpr std::uint64_t coefficientBytesAByte = 128 * 8;

constexpr int exifSegment = 1;
constexpr int profileSegment = 2;
constexpr std::string_view exifSignature{"Exif\0\0", 6};

bool isJPEG(ByteView head) {
    return head.size() >= 3 && head[0] == 0xFF && head[1] == 0xD8 && head[2] == 0xFF;
}

void limitScans(j_common_ptr info) {
    auto* decompress = reinterpret_cast<j_decompress_ptr>(info);
    if (decompress->input_scan_number > maximumScans)
        ERREXIT(info, JERR_EOI_EXPECTED);
}

/// Owns one run of the decompressor over one input.
class Decompressor {
public:
    explicit Decompressor(std::shared_ptr<const ByteReader> reader) : reader_(std::move(reader)) {
        info.err = errors.prepare();
        created_ = succeedsInLibrary(errors, [this] { jpeg_create_decompress(&info); });
        if (!created_)
            return;
        progress_ = {};
        progress_.progress_monitor = limitScans;
        info.progress = &progress_;
        input_.attach(info, *reader_);
    }
    ~Decompressor() {
        if (created_)
            jpeg_destroy_decompress(&info);
    }
    Decompressor(const Decompressor&) = delete;
    Decompressor& operator=(const Decompressor&) = delete;

    /// Reads up to the first scan; `keptSegments` are the numbers of the APPn segments to keep.
    Result<void> readHeader(std::initializer_list<int> keptSegments = {}) {
        const auto read = [this, &keptSegments] {
            for (const int segment : keptSegments)
                jpeg_save_markers(&info, JPEG_APP0 + segment, 0xFFFF);
            jpeg_read_header(&info, TRUE);
        };
        if (!created_ || !succeedsInLibrary(errors, read))
            return errors.failure();
        return {};
    }

    jpeg_decompress_struct info{};
    JPEGErrors errors{};

private:
    std::shared_ptr<const ByteReader> reader_;
    jpeg_progress_mgr progress_{};
    JPEGInput input_{};
    bool created_ = false;
};

class JPEGRows final : public RowSource {
public:
    JPEGRows(std::unique_ptr<Decompressor> decompressor, const RowFormat& format,
             std::unique_ptr<ForeignConverter> converter)
        : RowSource(format), decompressor_(std::move(decompressor)), converter_(std::move(converter)),
          inks_(converter_ == nullptr ? 0 : std::size_t{4} * format.width) {}

    Result<void> readRow(std::span<std::uint8_t> row) override {
        JSAMPROW target = converter_ == nullptr ? row.data() : inks_.data();
        Decompressor& d = *decompressor_;
        if (!succeedsInLibrary(d.errors, [&d, &target] { jpeg_read_scanlines(&d.info, &target, 1); }))
            return d.errors.failure();
        if (converter_ != nullptr)
            converter_->convert(inks_.data(), row.data(), format().width);
        return {};
    }

private:
    const std::unique_ptr<Decompressor> decompressor_;
    const std::unique_ptr<ForeignConverter> converter_;
    Bytes inks_;
};

class JPEGDecoder final : public ImageDecoder {
public:
    static Result<std::unique_ptr<ImageDecoder>> open(std::shared_ptr<const ByteReader> reader) {
        Decompressor header(reader);
        if (Result<void> read = header.readHeader({exifSegment, profileSegment}); !read)
            return read.failure();
        std::unique_ptr<JPEGDecoder> decoder(new JPEGDecoder(std::move(reader)));
        if (Result<void> described = decoder->describe(header); !described)
            return described.failure();
        return std::unique_ptr<ImageDecoder>(std::move(decoder));
    }

    Result<RowSourcePointer> rows(std::size_t frame, int eighths) const override {
        auto decompressor = std::make_unique<Decompressor>(reader_);
        if (Result<void> read = decompressor->readHeader(); !read)
            return read.failure();
        jpeg_decompress_struct& info = decompressor->info;
        info.scale_num = static_cast<unsigned>(eighths);
        info.scale_denom = 8;
        info.out_color_space = isCMYK_                                           ? JCS_CMYK
                               : frames_[frame].format.model == ColorModel::gray ? JCS_GRAYSCALE
                                                                                 : JCS_RGB;
        if (!succeedsInLibrary(decompressor->errors, [&info] { jpeg_start_decompress(&info); }))
            return decompressor->errors.failure();
        RowFormat format = frames_[frame].format;
        format.width = info.output_width;
        format.height = info.output_height;
        return RowSourcePointer(std::make_unique<JPEGRows>(std::move(decompressor), format, inkConverter()));
    }

    Result<Bytes> exif() const override { return exif_; }

private:
    explicit JPEGDecoder(std::shared_ptr<const ByteReader> reader) : reader_(std::move(reader)) {}

    Result<void> describe(Decompressor& header) {
        const jpeg_decompress_struct& info = header.info;
        if (info.num_components == 2 || info.num_components > 4)
            return Failure{Reason::unsupported,
                           "JPEG with " + std::to_string(info.num_components) + " components"};
        FrameDescription frame;
        frame.format = {info.image_width, info.image_height,
                        info.num_components == 1 ? ColorModel::gray : ColorModel::rgb, false,
                        SampleDepth::bits8};
        if (!frame.format.isWithinLimits())
            return Failure{Reason::tooLarge, "the picture is larger than 2^30 pixels"};
        const std::uint64_t coefficientBytes =
            frame.format.pixels() * static_cast<unsigned>(info.num_components) * 2;
        if (jpeg_has_multiple_scans(&header.info) && !isPlausible(coefficientBytes, info.arith_code != 0))
            return Failure{Reason::tooLarge, "the picture is too large for its way of storing (progressive)"};
        isCMYK_ = info.num_components == 4;
        inksAreInverted_ = info.saw_Adobe_marker != 0;
        readExif(info);
        const ExifFacts facts = readExifFacts(exif_);
        frame.resolution = resolutionOf(info, facts);
        frame.profile = profileOf(header, frame.format.model, facts);
        frame.canReduce = true;
        frames_.push_back(frame);
        return {};
    }

    bool isPlausible(std::uint64_t coefficientBytes, bool isArithmetic) const {
        return coefficientBytes <= freeCoefficientBytes
               || (coefficientBytes <= maximumCoefficientBytes
                   && (isArithmetic || coefficientBytes <= coefficientBytesAByte * reader_->size()));
    }

    void readExif(const jpeg_decompress_struct& info) {
        for (const jpeg_marker_struct* marker = info.marker_list; marker != nullptr; marker = marker->next) {
            const ByteView data(marker->data, marker->data_length);
            if (marker->marker != JPEG_APP0 + exifSegment || data.size() <= exifSignature.size()
                || std::memcmp(data.data(), exifSignature.data(), exifSignature.size()) != 0)
                continue;
            exif_.assign(data.begin() + exifSignature.size(), data.end());
            return;
        }
    }

    static Resolution resolutionOf(const jpeg_decompress_struct& info, const ExifFacts& facts) {
        constexpr double centimetresAnInch = 2.54;
        if (info.saw_JFIF_marker && info.density_unit == 1)
            return plausibleResolution(info.X_density, info.Y_density);
        if (info.saw_JFIF_marker && info.density_unit == 2)
            return plausibleResolution(info.X_density * centimetresAnInch,
                                       info.Y_density * centimetresAnInch);
        return facts.resolution.value_or(Resolution{});
    }

    std::optional<ColorProfile> profileOf(Decompressor& header, ColorModel model, const ExifFacts& facts) {
        JOCTET* data = nullptr;
        unsigned length = 0;
        const bool found =
            succeedsInLibrary(header.errors, [&] { jpeg_read_icc_profile(&header.info, &data, &length); });
        const std::unique_ptr<JOCTET, decltype(&std::free)> owner(data, &std::free);
        const ByteView icc = found && data != nullptr ? ByteView(data, length) : ByteView();
        if (isCMYK_) {
            inkProfile_.assign(icc.begin(), icc.end());
            return ColorProfile::sRGB();
        }
        if (!icc.empty())
            return ColorProfile::fromICC(icc, model);
        if (facts.isAdobeRGB && model == ColorModel::rgb)
            return ColorProfile::adobeRGB();
        return std::nullopt;
    }

    std::unique_ptr<ForeignConverter> inkConverter() const {
        if (!isCMYK_)
            return nullptr;
        return ForeignConverter::create(inksAreInverted_ ? ForeignModel::cmykInverted : ForeignModel::cmyk,
                                        SampleDepth::bits8, false, inkProfile_);
    }

    const std::shared_ptr<const ByteReader> reader_;
    Bytes exif_;
    Bytes inkProfile_;
    bool isCMYK_ = false;
    bool inksAreInverted_ = false;
};

} // namespace

const ImageCodec jpegCodec = {"JPEG", isJPEG, JPEGDecoder::open};

} // namespace kestrine
