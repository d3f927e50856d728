// ImageCodec: the interface of a file format. One folder per format; Registry.cpp lists the
// codecs.
#pragma once

#include "platform/coregraphics/AxisMap.h"
#include "platform/coregraphics/ColorProfile.h"
#include "platform/coregraphics/RowSource.h"
#include "platform/host/files/ByteReader.h"
#include "platform/imageio/DamageRecord.h"
#include "platform/imageio/FileContents.h"
#include "platform/imageio/Resolution.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <string_view>
#include <vector>

namespace kestrine {

/// One picture of a file, as its decoder delivers it. A TIFF file has one per page; most files have one.
struct FrameDescription {
    RowFormat format; ///< at full size
    Resolution resolution;
    std::optional<ColorProfile> profile; ///< of the delivered pixels; none means sRGB without a profile
    int quarterTurns = 0; ///< clockwise, 0 to 3, that the file asks for; `format` is the one after them
    int maxHalvings = 0;  ///< how often rows() can halve both sides
    bool isDrawn = false; ///< in any size that drawnRows() is asked for; `format` is the natural one
    int orientation = 1;  ///< EXIF orientation, 1 to 8, that is stored beside the pixels and not applied
    bool isUncompressed = false;     ///< whether decoding costs little more than reading the bytes
    unsigned storedBitsPerPixel = 0; ///< before compression; 0 if the same as in `format`
    std::uint64_t heldBytes = 0;     ///< of memory for a whole picture that rows() needs; 0 if they stream

    struct Sides {
        std::uint32_t width, height;
    };
    /// The sides before the quarter turns.
    Sides storedSides() const {
        return quarterTurns % 2 == 0 ? Sides{format.width, format.height}
                                     : Sides{format.height, format.width};
    }
};

/// An opened file whose header has been read. It holds no pixels.
class ImageDecoder {
public:
    virtual ~ImageDecoder() = default;

    /// At least one; the main picture is the first. Each satisfies RowFormat::isWithinLimits().
    const std::vector<FrameDescription>& frames() const { return frames_; }

    /// Starts decoding `frame` (an index into frames()) as it is stored, before its quarter turns, with both
    /// sides divided by 2^`halvings`, which is 0 to maxHalvings. Each side of the result has
    /// ceil(side / 2^halvings) pixels, and pixel i covers the interval [i, i + 1) * 2^halvings of the full
    /// picture. The rows stay valid after the decoder is destroyed. May be called several times, by any
    /// thread.
    virtual Result<RowSourcePointer> rows(std::size_t frame, int halvings) const = 0;

    /// Starts drawing a frame that `isDrawn`, before its quarter turns, in the size and place that the maps
    /// give. Otherwise as rows(). Fails with reason "unsupported" for other frames.
    virtual Result<RowSourcePointer> drawnRows(std::size_t frame, const AxisMap& x, const AxisMap& y) const;

    /// The EXIF block of the file, which begins with the TIFF header ("MM" or "II"); empty if there is none.
    virtual Result<Bytes> exif() const { return Bytes{}; }

    /// What the main picture may be only a part of. May read the whole file.
    virtual FileContents contents() const { return {}; }

    /// The colour table of an indexed picture: red, green and blue of each colour; empty if there is none.
    virtual Result<Bytes> colorTable() const { return Bytes{}; }

    /// Why some of the pixels delivered so far had to be invented: the file is cut off (truncated) or damaged
    /// (malformed). nullopt if all of them came from the file. Any thread.
    virtual std::optional<Failure> damage() const { return damage_->first(); }

protected:
    /// Decoders that invent pixels record it here.
    const std::shared_ptr<DamageRecord> damage_ = std::make_shared<DamageRecord>();
    std::vector<FrameDescription> frames_;
};

/// How much time an encoder spends on small files.
enum class Effort : std::uint8_t { fast, normal, max };

/// What an encoder writes besides the pixels. Pointers may be null; what they point to must outlive the call.
struct EncodingOptions {
    double quality = 0;              ///< JPEG, WebP, AVIF, JPEG XL: 0 to 1; see percent() for other numbers
    bool isLossless = false;         ///< WebP, AVIF, JPEG XL: exact, whatever the quality
    bool isProgressive = false;      ///< JPEG: shows the whole picture early, and is a little smaller
    Effort effort = Effort::normal;  ///< PNG, WebP, AVIF, JPEG XL
    bool ditherTransparency = false; ///< GIF: dither partial transparency instead of using a threshold
    Resolution resolution;           ///< stored if the format can hold it
    const ColorProfile* profile = nullptr; ///< embedded if the format can hold it
    ByteView exif;                         ///< JPEG: a complete EXIF block, which begins with the TIFF header
    ByteView colorTable;                   ///< GIF: red, green and blue of each colour, at most 256 colours

    /// The quality as 0 to 100, clamped; 0 for NaN.
    double percent() const { return std::isnan(quality) ? 0 : std::clamp(quality, 0.0, 1.0) * 100; }
};

/// How many bytes at most, from the start of a file, decide about its format.
inline constexpr std::size_t maxHeadBytes = 4096;

struct ImageCodec {
    std::string_view name;
    /// Whether a file that begins with these bytes (up to maxHeadBytes) has this format. Reads nothing else.
    bool (*recognises)(ByteView head);
    /// Reads the header of a recognised file.
    Result<std::unique_ptr<ImageDecoder>> (*open)(std::shared_ptr<const ByteReader> reader);
    /// Opens the libraries that open() needs and that are not linked, for a process that can open none later.
    /// Null if there are none.
    void (*openLibraries)() = nullptr;
    /// Opens the files that open() refuses with reason "otherFormat", because the signature is not enough to
    /// tell them apart; else null.
    const ImageCodec* other = nullptr;
    /// Whether ImageDecoder::contents() is always one picture, so that the decoder need not be asked.
    bool holdsOnePicture = false;
};

/// The codec that recognises the first bytes of the file; null if none does.
const ImageCodec* codecFor(const ByteReader& reader);
/// The same. Fails with reason "unsupported" if there is none.
Result<const ImageCodec*> knownCodecFor(const ByteReader& reader);

/// One bit if the codec has libraries to open, else 0.
std::uint32_t librariesOf(const ImageCodec& codec);
/// Opens the libraries that pictures of all formats need.
void openCommonLibraries();
/// Opens the libraries of all codecs and output formats whose bits are set in `chosen`.
void openLibraries(std::uint32_t chosen);

/// The position of the codec in the list of all codecs, by which other processes know it.
std::uint32_t numberOf(const ImageCodec& codec);
/// The codec at that position; null if there is none.
const ImageCodec* codecNumbered(std::uint32_t number);

struct OpenedImage {
    std::unique_ptr<ImageDecoder> decoder;
    const ImageCodec* codec; ///< that opened it
};

/// Opens the file with the codec that recognises it, or with its `other`. Fails with reason "unsupported" if
/// none does, and with "implausible" if the file is too short for a picture that it claims to hold (see
/// Plausibility.h).
Result<OpenedImage> openWithKnownCodec(const std::shared_ptr<const ByteReader>& reader);
/// The same without the codec.
Result<std::unique_ptr<ImageDecoder>> openImage(const std::shared_ptr<const ByteReader>& reader);
/// The same with this codec and no other. Fails with reason "otherFormat" if its `other` must open the file.
Result<std::unique_ptr<ImageDecoder>> openImage(std::shared_ptr<const ByteReader> reader,
                                                const ImageCodec& codec);

} // namespace kestrine
