// NSImage: a size in points and the representations that can be drawn into it.
#pragma once

#include "platform/appkit/NSImageRep.h"

namespace kestrine {

/// Has reference semantics: it is held by shared pointers, and the same pointer is the same image. Operations
/// copy what they need of it (pixels, sizes) when they are called, so changing it later changes no image made
/// before.
class NSImage final : public NSObject {
public:
    /// `initWithContentsOfFile:`: nil when the file cannot be opened or is not a picture. As large, in
    /// points, as its first representation. Pixels are not decoded yet.
    static std::shared_ptr<NSImage> initWithContentsOfFile(const NSString& path);
    /// The same for a file that is open already.
    static std::shared_ptr<NSImage> initWithSource(const std::shared_ptr<Source>& source);
    /// `initWithSize:`: without representations.
    explicit NSImage(NSSize size) : size_(size) {}

    NSSize size() const { return size_; }
    /// `setSize:`: the representations keep theirs.
    void setSize(NSSize size) { size_ = size; }

    const std::vector<std::shared_ptr<NSImageRep>>& representations() const { return representations_; }
    void addRepresentation(std::shared_ptr<NSImageRep> rep);
    /// `bestRepresentationForDevice:` without a device: the main picture of a file, which is the first
    /// representation. Of an image that representations were added to, the one with most pixels, the first of
    /// equals. nil when empty.
    std::shared_ptr<NSImageRep> bestRepresentation() const;

    /// What decoding the image's `TIFFRepresentation` as one bitmap gives: the pixels of the first
    /// representation at the image's own size in points. No TIFF bytes are made; the pixels are shared. nil
    /// when there is no representation.
    std::shared_ptr<NSBitmapImageRep> bitmapOfTIFFRepresentation() const;

    /// `TIFFRepresentation`: the file that this bitmap would come from, with its profile. nil likewise, and
    /// when the file cannot be made.
    std::shared_ptr<const NSData> TIFFRepresentation() const;

    /// `setCacheMode:` with "always": the source's pixels are decoded once and kept for every further use.
    void keepPixels() const;

    /// Why pixels of the image had to be made up: its file is cut off (reason truncated) or damaged
    /// (malformed), and what was missing became grey, black or clear. Only rows that were decoded already are
    /// considered, for this image or for any other image of the same file. Nothing while all pixels came from
    /// the file. Any thread.
    std::optional<Failure> damage() const;

private:
    NSSize size_;
    std::vector<std::shared_ptr<NSImageRep>> representations_;
    bool isAsLoaded_ = false; ///< whether all representations come from one file
};

/// How an image is put on a canvas.
struct Drawing {
    std::optional<QuarterTurn> turn; ///< before it is drawn
    bool onWhite = false; ///< over a white canvas (source-over); else its pixels replace a clear one (copy)
    float fraction = 1;   ///< its alpha is multiplied by this; below 0 and NaN count as 0, above 1 as 1
};

/// What focusing on a new image of `canvas` points and drawing the whole of `image` over all of it leaves: an
/// image of exactly that size, whose pixels are floor(points + 0.5) a side, at least 1 for a positive side.
/// Plain scaling is linear interpolation, widened with the reduction, in the stored encoding; an unscaled
/// drawing copies pixels. An image without representations leaves the canvas clear. A canvas without area, or
/// with a side that no picture may have, gets no representation.
std::shared_ptr<NSImage> drawnImage(NSSize canvas, const NSImage& image, const Drawing& drawing = {});

} // namespace kestrine
