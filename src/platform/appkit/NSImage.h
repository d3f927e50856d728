// NSImage: a size in points and the representations that can be drawn into it.
#pragma once

#include "platform/appkit/NSImageRep.h"

namespace kestrine {

/// Has reference semantics: it is held by shared pointers, and the same pointer is the same image. Operations
/// copy what they need of it (pixels, sizes) when they are called, so changing it later does not change
/// images made earlier.
class NSImage final : public NSObject {
public:
    /// `initWithContentsOfFile:`: nil when the file cannot be opened or is not a picture. Has the size in
    /// points of its first representation. Pixels are not decoded yet.
    static std::shared_ptr<NSImage> initWithContentsOfFile(const NSString& path);
    /// The same for a file that is open already.
    static std::shared_ptr<NSImage> initWithSource(const std::shared_ptr<Source>& source);
    /// `initWithSize:`: without representations.
    explicit NSImage(NSSize size) : size_(size) {}

    NSSize size() const { return size_; }
    /// `setSize:`: the sizes of the representations do not change.
    void setSize(NSSize size) { size_ = size; }

    const std::vector<std::shared_ptr<NSImageRep>>& representations() const { return representations_; }
    void addRepresentation(std::shared_ptr<NSImageRep> rep);
    /// `bestRepresentationForDevice:` without a device: the main picture of a file, which is the first
    /// representation. If representations were added to the image, the first one with the most pixels. nil if
    /// there is none.
    std::shared_ptr<NSImageRep> bestRepresentation() const;

    /// The bitmap that decoding the image's `TIFFRepresentation` would give: the pixels of the first
    /// representation with the image's size in points. No TIFF file is made; the pixels are shared. nil when
    /// there is no representation.
    std::shared_ptr<NSBitmapImageRep> bitmapOfTIFFRepresentation() const;

    /// `TIFFRepresentation`: a file of this bitmap with its profile. nil when there is no representation or
    /// the file cannot be made.
    std::shared_ptr<const NSData> TIFFRepresentation() const;

    /// `setCacheMode:` with "always": the source's pixels are decoded once and kept for every further use.
    void keepPixels() const;

    /// Why pixels of the image had to be invented: its file is cut off (reason truncated) or damaged
    /// (malformed), and missing pixels became grey, black or transparent. Considers only rows that were
    /// already decoded, for this image or another image of the same file. nullopt while all pixels came from
    /// the file. Any thread.
    std::optional<Failure> damage() const;

private:
    NSSize size_;
    std::vector<std::shared_ptr<NSImageRep>> representations_;
    bool isAsLoaded_ = false; ///< whether all representations come from one file
};

/// How an image is drawn on a canvas.
struct Drawing {
    std::optional<QuarterTurn> turn; ///< before it is drawn
    bool onWhite =
        false;          ///< on a white canvas (source-over); else its pixels replace a transparent one (copy)
    float fraction = 1; ///< its alpha is multiplied by this; below 0 and NaN count as 0, above 1 as 1
};

/// A new image of exactly `canvas` points, filled with the whole of `image`. Each side has floor(points +
/// 0.5) pixels, at least 1 for a positive side. Scaling is linear interpolation, widened for reductions, in
/// the stored encoding; without scaling the pixels are copied. If `image` has no representations, the result
/// is transparent. If `canvas` has no area, or a side too large for a picture, the result has no
/// representation.
std::shared_ptr<NSImage> drawnImage(NSSize canvas, const NSImage& image, const Drawing& drawing = {});

} // namespace kestrine
