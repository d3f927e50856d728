// Picture: a source and what is to be done with it, as plain data. Nothing is decoded before render().
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

/// An input whose header has been read. It owns the bytes or the open file, never a path, so the file may be
/// moved meanwhile. Safe to use from several threads.
class Source {
public:
    static Result<std::shared_ptr<Source>> open(std::shared_ptr<const ByteReader> reader);
    /// A canvas on which nothing has been drawn: one frame of clear 8-bit RGB. Its sides are within the
    /// limits.
    static std::shared_ptr<Source> clear(std::uint32_t width, std::uint32_t height);

    const std::vector<FrameDescription>& frames() const { return decoder_->frames(); }
    const ImageDecoder& decoder() const { return *decoder_; }

    /// From now on a frame is decoded once, at full size, and its pixels are kept for further results, unless
    /// it is too large for that; then each result decodes it again.
    void keepPixels() { keepsPixels_ = true; }
    bool keepsPixels(std::size_t frame) const {
        return keepsPixels_ && frames()[frame].format.canBeBuffered();
    }

    /// The rows of a frame, decoded at `eighths` eighths of its size (8 when its pixels are kept).
    Result<RowSourcePointer> rows(std::size_t frame, int eighths);

    /// Why pixels that were decoded so far, of any frame, had to be made up; nothing while none were.
    std::optional<Failure> damage() const { return decoder_->damage(); }

    /// How many decodes have been started in this process.
    static std::uint64_t decodesStarted();

private:
    explicit Source(std::unique_ptr<ImageDecoder> decoder)
        : decoder_(std::move(decoder)), kept_(decoder_->frames().size()) {}

    Result<RowSourcePointer> decode(std::size_t frame, int eighths) const;

    const std::unique_ptr<ImageDecoder> decoder_;
    std::atomic<bool> keepsPixels_ = false;
    std::mutex mutex_;
    std::vector<std::shared_ptr<const PixelBuffer>> kept_; ///< by frame; guarded by mutex_
};

enum class QuarterTurn : std::uint8_t { clockwise, counterclockwise };
/// Lays the picture on white.
struct Flatten {
    bool operator==(const Flatten&) const = default;
};
/// Multiplies alpha by `fraction`, 0 to 1; what has no alpha left has no colour.
struct Fade {
    float fraction = 1;

    bool operator==(const Fade&) const = default;
};
/// Makes 8-bit RGB with alpha of it, in generic RGB: the one step that changes what colours the codes mean.
struct IntoGenericRGBA {
    bool operator==(const IntoGenericRGBA&) const = default;
};
using PictureStep = std::variant<QuarterTurn, Resampling, Flatten, Fade, IntoGenericRGBA>;

struct Picture {
    std::shared_ptr<Source> source;
    std::size_t frame = 0;
    std::vector<PictureStep> steps; ///< in order, each on the result of the one before

    /// Of the source.
    const FrameDescription& description() const { return source->frames()[frame]; }

    /// Of the result's rows, before a file type takes away what it cannot hold.
    RowFormat format() const;
    std::uint32_t width() const { return format().width; }
    std::uint32_t height() const { return format().height; }
    /// The profile of the result's pixels; none means sRGB, untagged.
    std::optional<ColorProfile> profile() const;
    /// Whether neither the source nor the result of any step is beyond the limits of a picture.
    bool isWithinLimits() const;
    /// Whether it lies another way than its source: turns that undo each other are none.
    bool wasTurned() const;
    Picture with(PictureStep step) const;
};

/// The profile of pixels that had `profile` before `step`.
std::optional<ColorProfile> profileAfter(const PictureStep& step, std::optional<ColorProfile> profile);

} // namespace kestrine
