// ImageCodec: what the engine knows of a file format. One folder per format; Registry.cpp lists
// the codecs.
#pragma once

#include "platform/coregraphics/ColorProfile.h"
#include "platform/coregraphics/RowSource.h"
#include "platform/host/files/ByteReader.h"
#include "platform/imageio/DamageRecord.h"
#include "platform/imageio/Resolution.h"

#include <optional>
#include <string_view>
#include <vector>

namespace kestrine {

/// One picture of a file (the page of a TIFF; most files have one), as its decoder delivers it.
struct FrameDescription {
    RowFormat format; ///< at full size
    Resolution resolution;
    std::optional<ColorProfile> profile; ///< of the delivered pixels; none means sRGB, untagged
    bool canReduce = false;              ///< whether rows() can deliver 4, 2 or 1 eighths
    bool isUncompressed = false;         ///< whether rows cost little more than reading their bytes
};

/// An opened file whose header has been read. It holds no pixels.
class ImageDecoder {
public:
    virtual ~ImageDecoder() = default;

    /// At least one, the main picture first, each within the limits of RowFormat::isWithinLimits().
    const std::vector<FrameDescription>& frames() const { return frames_; }

    /// Starts decoding `frame` (an index into frames()). `eighths` is 8, or 4, 2, 1 where the frame can
    /// reduce: each side then has ceil(side * eighths / 8) pixels, pixel i covering [8i, 8(i+1)) / eighths of
    /// the full picture. The rows stay valid without the decoder. May be called again.
    virtual Result<RowSourcePointer> rows(std::size_t frame, int eighths) const = 0;

    /// The file's EXIF block, from the TIFF header on ("MM" or "II"); empty when there is none.
    virtual Result<Bytes> exif() const { return Bytes{}; }

    /// The colour table of an indexed picture: red, green and blue per colour; empty when there is none.
    virtual Result<Bytes> colorTable() const { return Bytes{}; }

    /// Why pixels that were delivered so far had to be made up: the file is cut off (truncated) or damaged
    /// (malformed). Nothing while all of them came from the file. Any thread.
    std::optional<Failure> damage() const { return damage_->first(); }

protected:
    /// Decoders whose rows can make up pixels let them note it here.
    const std::shared_ptr<DamageRecord> damage_ = std::make_shared<DamageRecord>();
    std::vector<FrameDescription> frames_;
};

/// What goes into a file besides its pixels. Pointers may be null and must outlive the call.
struct EncodingOptions {
    double quality = 0;                    ///< formats with a quality: 0 to 1, any float is allowed
    bool ditherTransparency = false;       ///< GIF: diffuse half-transparency instead of cutting it
    Resolution resolution;                 ///< recorded where the format can
    const ColorProfile* profile = nullptr; ///< embedded where the format can
    ByteView exif;       ///< formats that hold EXIF: a finished block, from the TIFF header on
    ByteView colorTable; ///< GIF: red, green and blue per colour, at most 256
};

struct ImageCodec {
    std::string_view name;
    /// Looks at the first bytes (up to 64) of a file. Pure and cheap.
    bool (*recognises)(ByteView head);
    /// Reads the header of a recognised file.
    Result<std::unique_ptr<ImageDecoder>> (*open)(std::shared_ptr<const ByteReader> reader);
};

/// The codec that recognises a file by its first bytes; null when none does.
const ImageCodec* codecFor(const ByteReader& reader);

/// The codec that recognises the input, opened.
Result<std::unique_ptr<ImageDecoder>> openImage(std::shared_ptr<const ByteReader> reader);

} // namespace kestrine
