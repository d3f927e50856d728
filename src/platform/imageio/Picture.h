// Picture: a source and a list of steps, as plain data. Nothing is decoded before render().
#pragma once

#include "platform/coregraphics/PixelBuffer.h"
#include "platform/coregraphics/RGBColor.h"
#include "platform/coregraphics/Resampler.h"
#include "platform/imageio/ImageCodec.h"

#include <optional>
#include <variant>
#include <vector>

namespace kestrine {

struct Output;
struct Picture;

/// A property that a file has beside its pixels.
enum class PictureProperty : std::uint8_t { profile, exif, colorTable, contents, profileName };

/// A question that the header of a file does not answer, such as the orientation that one reader finds. It
/// reads only `file`, in the process that decodes that file.
using FileQuestion = Result<Bytes> (*)(const std::shared_ptr<const ByteReader>& file);

/// An input whose header has been read. It owns the bytes or the open file, not a path, so the file may be
/// moved in the meantime. PictureEngine opens it, and decides in which process it is decoded. Any thread.
class Source {
public:
    virtual ~Source() = default;

    /// An empty canvas: one frame of transparent 8-bit RGB. Its sides must be within the limits.
    static std::shared_ptr<Source> clear(std::uint32_t width, std::uint32_t height);

    /// At least one; the main picture is the first. `profile` is set only in the process that decodes.
    const std::vector<FrameDescription>& frames() const { return frames_; }
    /// The codec of the file; null for an empty canvas.
    const ImageCodec* codec() const { return codec_; }
    /// Whether it is an empty canvas, not a file.
    virtual bool isCanvas() const { return false; }

    /// Makes each frame be decoded only at full size, and only once if there is memory to keep its pixels for
    /// further results.
    virtual void keepPixels() = 0;

    /// Why some of the pixels decoded so far, of any frame, had to be invented; nullopt if none were.
    virtual std::optional<Failure> damage() const = 0;

    /// A property of `picture`, which is of this source: the ICC profile of the result of its steps, or the
    /// EXIF block, colour table or FileContents (see contentsOf()) of the file. Empty if there is none.
    virtual Result<Bytes> property(const Picture& picture, PictureProperty property) const = 0;
    virtual Result<Bytes> answer(FileQuestion question) const = 0;

    /// For render(), renderInto() and readPixels(). `picture` is of this source, or of an empty canvas.
    virtual Result<Bytes> rendered(const Picture& picture, const Output& output) = 0;
    virtual Result<void> renderInto(int file, const Picture& picture, const Output& output) = 0;
    virtual Result<PixelBuffer> pixels(const Picture& picture) = 0;

protected:
    std::vector<FrameDescription> frames_;
    const ImageCodec* codec_ = nullptr;
};

enum class QuarterTurn : std::uint8_t { clockwise, counterclockwise };
/// Exchanges left and right.
struct Mirror {
    bool operator==(const Mirror&) const = default;
};
/// Puts the picture on a background. A picture in grey must be on grey.
struct Flatten {
    RGBColor background = white;

    bool operator==(const Flatten&) const = default;
};
/// Adds opaque margins, in pixels. A picture in grey must get grey ones.
struct Pad {
    std::uint32_t left = 0, top = 0, right = 0, bottom = 0;
    RGBColor color = white;

    bool operator==(const Pad&) const = default;
};
/// Multiplies alpha by `fraction`, 0 to 1. Pixels whose alpha becomes 0 lose their colour.
struct Fade {
    float fraction = 1;

    bool operator==(const Fade&) const = default;
};
/// Converts to 8-bit RGB with alpha in the generic RGB profile.
struct IntoGenericRGBA {
    bool operator==(const IntoGenericRGBA&) const = default;
};
/// Converts to RGB in sRGB. Grey becomes RGB. The other steps, except IntoGenericRGBA, keep the profile.
struct IntoSRGB {
    bool operator==(const IntoSRGB&) const = default;
};
using PictureStep =
    std::variant<QuarterTurn, Resampling, Flatten, Fade, IntoGenericRGBA, Mirror, Pad, IntoSRGB>;

struct Picture {
    std::shared_ptr<Source> source;
    std::size_t frame = 0;
    std::vector<PictureStep> steps; ///< each is applied to the result of the previous one

    /// Describes the frame of the source.
    const FrameDescription& description() const { return source->frames()[frame]; }

    /// The format of the resulting rows, before conversion to what a file type can hold.
    RowFormat format() const;
    std::uint32_t width() const { return format().width; }
    std::uint32_t height() const { return format().height; }
    /// The profile of the resulting pixels; none means sRGB without a profile. Only in the process that
    /// decodes the source.
    std::optional<ColorProfile> profile() const;
    /// Whether the source and the result of every step are within the limits of a picture.
    bool isWithinLimits() const;
    /// Whether the result is turned or mirrored relative to its source. Turns that cancel each other do not
    /// count.
    bool wasTurned() const;
    Picture with(PictureStep step) const;
};

/// What the main picture of `source` may be only a part of. May read the whole file. Any thread.
Result<FileContents> contentsOf(const std::shared_ptr<Source>& source);

/// The profile after `step` of pixels that had `profile` before it.
std::optional<ColorProfile> profileAfter(const PictureStep& step, std::optional<ColorProfile> profile);

/// The failure for a result with a side longer than maximumSide pixels.
Failure sideTooLong();
/// Fails if no result can have this size, in pixels.
Result<void> checkSize(std::uint64_t width, std::uint64_t height);
/// The same for the result of a picture, and for what its steps make on the way.
Result<void> checkSize(const Picture& picture);

} // namespace kestrine
