#include "platform/imageio/jpeg/Decoder.h"

#include "platform/imageio/Codecs.h"
#include "platform/imageio/FallbackRows.h"
#include "platform/imageio/HeldReader.h"
#include "platform/imageio/exif/ExifFacts.h"
#include "platform/imageio/exif/ExifSegment.h"
#include "platform/imageio/jpeg/LibraryRows.h"
#ifdef KESTRINE_OWN_JPEG_DECODER
#include "platform/imageio/jpeg/own/OwnRows.h"
#endif

#include <cstdlib>
#include <cstring>
#include <span>

namespace kestrine::jpeg {

namespace {

/// libjpeg-turbo holds all coefficients of a progressive picture in memory.
constexpr std::uint64_t maximumCoefficientBytes = std::uint64_t{2} << 30;
/// Above this size the file must also be long enough: the first scan of a Huffman coded file has at least one
/// bit per block, and a block has 128 bytes of coefficients.
constexpr std::uint64_t uncheckedCoefficientBytes = std::uint64_t{256} << 20;
constexpr std::uint64_t maxCoefficientBytesPerByte = 128 * 8;

constexpr int exifSegment = 1;
constexpr int profileSegment = 2;
constexpr std::size_t maxExifBytes = 1 << 20;

bool beginsBlock(ByteView exif) {
    return exif.size() >= 4 && exif[0] == exif[1] && (exif[0] == 'M' || exif[0] == 'I')
           && (exif[2] == 42 || exif[3] == 42);
}

bool recognises(ByteView head) {
    return head.size() >= 3 && head[0] == 0xFF && head[1] == 0xD8 && head[2] == 0xFF;
}

std::uint64_t bytesOfCoefficients(const jpeg_decompress_struct& info) {
    std::uint64_t blocks = 0;
    for (const jpeg_component_info& component :
         std::span(info.comp_info, static_cast<std::size_t>(info.num_components)))
        blocks += std::uint64_t{component.width_in_blocks} * component.height_in_blocks;
    return blocks * sizeof(JBLOCK);
}

class Decoder final : public ImageDecoder {
public:
    static Result<std::unique_ptr<ImageDecoder>> open(std::shared_ptr<const ByteReader> reader,
                                                      DecoderChoice choice) {
        auto file = std::make_unique<LibraryReader>(reader);
        TRY(file->readHeader({exifSegment, profileSegment}));
        std::unique_ptr<Decoder> decoder(new Decoder(std::move(reader)));
        TRY(decoder->describe(*file));
        decoder->keepHeader(std::move(file), choice);
        return std::unique_ptr<ImageDecoder>(std::move(decoder));
    }

    Result<RowSourcePointer> rows(std::size_t frame, int halvings) const override {
        const int eighths = 8 >> halvings;
        const RowFormat format = frames_[frame].format;
        std::unique_ptr<ForeignConverter> inks = isCMYK_ ? inkConverter() : nullptr;
        if (std::unique_ptr<LibraryReader> file = file_.take())
            return openLibraryRows(std::move(file), format, eighths, damage_, std::move(inks));
#ifdef KESTRINE_OWN_JPEG_DECODER
        if (ownHeader_)
            if (Result<RowSourcePointer> own = openOwnRows(reader_, *ownHeader_, eighths, damage_); own)
                return rowsWithFallback(std::move(*own),
                                        [reader = reader_, format, eighths, damage = damage_] {
                                            return openLibraryRows(reader, format, eighths, damage);
                                        });
#endif
        return openLibraryRows(reader_, format, eighths, damage_, std::move(inks));
    }

    Result<Bytes> exif() const override { return exif_; }

private:
    explicit Decoder(std::shared_ptr<const ByteReader> reader) : reader_(std::move(reader)) {}

    /// Keeps of `file`, whose header has been read, what the decoder of the pixels needs.
    void keepHeader(std::unique_ptr<LibraryReader> file, [[maybe_unused]] DecoderChoice choice) {
#ifdef KESTRINE_OWN_JPEG_DECODER
        if (choice == DecoderChoice::ownFirst)
            if (Result<FrameHeader> header = frameHeaderOf(*file)) {
                ownHeader_ = *header;
                return;
            }
#endif
        file_.hold(std::move(file));
    }

    Result<void> describe(LibraryReader& header) {
        const jpeg_decompress_struct& info = header.info;
        if (info.num_components == 2 || info.num_components > 4)
            return Failure{Reason::unsupported, "a JPEG with " + std::to_string(info.num_components)
                                                    + " components is not supported"};
        FrameDescription frame;
        frame.format = {info.image_width, info.image_height,
                        info.num_components == 1 ? ColorModel::gray : ColorModel::rgb, false,
                        SampleDepth::bits8};
        if (!frame.format.isWithinLimits())
            return Failure{Reason::tooLarge, "the JPEG picture has too many pixels"};
        frame.heldBytes = jpeg_has_multiple_scans(&header.info) ? bytesOfCoefficients(info) : 0;
        if (!isPlausible(frame.heldBytes, info.arith_code != 0))
            return Failure{Reason::tooLarge,
                           "the picture is too large for a progressive JPEG of this length"};
        isCMYK_ = info.num_components == 4;
        readExif(info);
        const ExifFacts facts = readExifFacts(exif_);
        frame.resolution = resolutionOf(info, facts);
        frame.orientation = facts.orientation;
        frame.profile = profileOf(header, frame.format.model, facts);
        frame.maxHalvings = 3;
        frames_.push_back(frame);
        return {};
    }

    bool isPlausible(std::uint64_t coefficientBytes, bool isArithmetic) const {
        return coefficientBytes <= uncheckedCoefficientBytes
               || (coefficientBytes <= maximumCoefficientBytes
                   && (isArithmetic || coefficientBytes <= maxCoefficientBytesPerByte * reader_->size()));
    }

    /// The first block. One of more than 64 KiB continues in the next segments, which have the signature,
    /// too.
    void readExif(const jpeg_decompress_struct& info) {
        for (const jpeg_marker_struct* marker = info.marker_list; marker != nullptr; marker = marker->next) {
            const ByteView data(marker->data, marker->data_length);
            if (marker->marker != JPEG_APP0 + exifSegment || !hasExifSegmentMark(data))
                continue;
            const ByteView block = data.subspan(exifSegmentMark.size());
            if (!exif_.empty() && (beginsBlock(block) || exif_.size() + block.size() > maxExifBytes))
                return;
            exif_.insert(exif_.end(), block.begin(), block.end());
        }
    }

    static Resolution resolutionOf(const jpeg_decompress_struct& info, const ExifFacts& facts) {
        if (info.saw_JFIF_marker && info.density_unit == 1)
            return plausibleResolution(info.X_density, info.Y_density);
        if (info.saw_JFIF_marker && info.density_unit == 2)
            return plausibleResolution(info.X_density * centimetresPerInch,
                                       info.Y_density * centimetresPerInch);
        return facts.resolution.value_or(Resolution{});
    }

    std::optional<ColorProfile> profileOf(LibraryReader& header, ColorModel model, const ExifFacts& facts) {
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
        return ForeignConverter::create(ForeignModel::cmykInverted, SampleDepth::bits8, false, inkProfile_);
    }

    const std::shared_ptr<const ByteReader> reader_;
#ifdef KESTRINE_OWN_JPEG_DECODER
    std::optional<FrameHeader> ownHeader_; ///< of the files that our own decoder supports
#endif
    mutable HeldReader<LibraryReader> file_; ///< of all other files
    Bytes exif_;
    Bytes inkProfile_;
    bool isCMYK_ = false;
};

} // namespace

Result<std::unique_ptr<ImageDecoder>> openDecoder(std::shared_ptr<const ByteReader> reader,
                                                  DecoderChoice choice) {
    return Decoder::open(std::move(reader), choice);
}

const ImageCodec codec = {.name = "JPEG",
                          .recognises = recognises,
                          .open =
                              [](std::shared_ptr<const ByteReader> reader) {
                                  return openDecoder(std::move(reader), DecoderChoice::ownFirst);
                              },
                          .holdsOnePicture = true};

} // namespace kestrine::jpeg
