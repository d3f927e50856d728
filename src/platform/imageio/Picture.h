// Picture: a source and a list of steps, as plain data. Nothing is decoded before render().
#pragma once

#include "platform/coregraphics/PixelBuffer.h"
#include "platform/coregraphics/Resampler.h"
#include "platform/imageio/ImageCodec.h"

#include <atomic>
#include <mutex>
#include <optional>
#include <variant>
#include <vector>

namespace kestrine {

/// An input whose header has been read. It owns the bytes or the open file, not a path, so the file may be
/// moved in the meantime. Any thread.
class Source {
public:
    static Result<std::shared_ptr<Source>> open(std::shared_ptr<const ByteReader> reader);
    /// An empty canvas: one frame of transparent 8-bit RGB. Its sides must be within the limits.
    static std::shared_ptr<Source> clear(std::uint32_t width, std::uint32_t height);

    const std::vector<FrameDescription>& frames() const { return decoder_->frames(); }
    const ImageDecoder& decoder() const { return *decoder_; }

    /// From now on each frame is decoded only at full size, and if there is memory for its pixels only once:
    /// they are kept for further results.
    void keepPixels() { keepsPixels_ = true; }
    bool keepsPixels(std::size_t frame) const {
        return keepsPixels_ && frames()[frame].format.canBeBuffered();
    }
    /// Whether the pixels of a frame are in memory.
    bool holdsPixels(std::size_t frame);

    /// The rows of a frame, decoded at `eighths` eighths of its size; must be 8 if keepsPixels(frame). The
    /// caller must have reserved the memory that decoding needs (see FrameDescription::heldBytes).
    Result<RowSourcePointer> rows(std::size_t frame, int eighths);

    /// Why some of the pixels decoded so far, of any frame, had to be invented; nullopt if none were.
    std::optional<Failure> damage() const { return decoder_->damage(); }

    /// How often decoding has been started in this process.
    static std::uint64_t decodesStarted();

private:
    Source(std::unique_ptr<ImageDecoder> decoder, std::uint64_t fileBytes)
        : decoder_(std::move(decoder)), fileBytes_(fileBytes), kept_(decoder_->frames().size()) {}

    Result<RowSourcePointer> decode(std::size_t frame, int eighths) const;
    /// Decodes the frame and keeps its pixels if there is memory for them; else gives null.
    Result<std::shared_ptr<const PixelBuffer>> decodeToKeep(std::size_t frame) const;

    const std::unique_ptr<ImageDecoder> decoder_;
    const std::uint64_t fileBytes_;
    std::atomic<bool> keepsPixels_ = false;
    std::mutex mutex_;
    std::vector<std::shared_ptr<const PixelBuffer>> kept_; ///< by frame; guarded by mutex_
};

enum class QuarterTurn : std::uint8_t { clockwise, counterclockwise };
/// Puts the picture on a white background.
struct Flatten {
    bool operator==(const Flatten&) const = default;
};
/// Multiplies alpha by `fraction`, 0 to 1. Pixels whose alpha becomes 0 lose their colour.
struct Fade {
    float fraction = 1;

    bool operator==(const Fade&) const = default;
};
/// Converts to 8-bit RGB with alpha in the generic RGB profile. No other step changes the profile.
struct IntoGenericRGBA {
    bool operator==(const IntoGenericRGBA&) const = default;
};
using PictureStep = std::variant<QuarterTurn, Resampling, Flatten, Fade, IntoGenericRGBA>;

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
    /// The profile of the resulting pixels; none means sRGB without a profile.
    std::optional<ColorProfile> profile() const;
    /// Whether the source and the result of every step are within the limits of a picture.
    bool isWithinLimits() const;
    /// Whether the result is turned against its source. Turns that cancel each other do not count.
    bool wasTurned() const;
    Picture with(PictureStep step) const;
};

/// The profile after `step` of pixels that had `profile` before it.
std::optional<ColorProfile> profileAfter(const PictureStep& step, std::optional<ColorProfile> profile);

} // namespace kestrine
