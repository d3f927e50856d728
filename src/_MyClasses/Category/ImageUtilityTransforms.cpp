#include "_MyClasses/Category/ImageUtility.h"

#include "platform/foundation/NSException.h"

namespace kestrine::myUtility {

namespace {

constexpr float thumbnailSide = 128; // points

ImagePointer turned(const ImagePointer& image, QuarterTurn turn) {
    if (image == nullptr)
        return nullptr;
    const NSSize size = image->size();
    return drawnImage({size.height, size.width}, *image, {.turn = turn});
}

/// The largest size of this aspect ratio with no side above `thumbnailSide`. The order of multiplication and
/// division matters for rounding.
NSSize thumbnailSize(NSSize size) {
    if (size.width > size.height)
        return {thumbnailSide, size.height * thumbnailSide / size.width};
    return {size.width * thumbnailSide / size.height, thumbnailSide};
}

} // namespace

void convertResolution(NSImage& image) {
    const std::shared_ptr<NSImageRep> rep = image.bestRepresentation();
    const int high = rep == nullptr ? 0 : rep->pixelsHigh();
    const int wide = rep == nullptr ? 0 : rep->pixelsWide();
    image.setSize({static_cast<float>(wide), static_cast<float>(high)});
}

NSSize imageResolution(const NSImage& image) {
    if (image.representations().empty())
        throw NSException(NSRangeException, "index 0 beyond bounds of an empty list of representations");
    const auto wide = static_cast<float>(image.representations().front()->pixelsWide());
    return {wide / image.size().width, wide / image.size().height};
}

ImagePointer clockwiseRotate(const ImagePointer& image) {
    return turned(image, QuarterTurn::counterclockwise);
}

ImagePointer rotate(const ImagePointer& image) { return turned(image, QuarterTurn::clockwise); }

ImagePointer thumbnailImage(const ImagePointer& image) {
    if (image == nullptr)
        return nullptr;
    const std::shared_ptr<NSImageRep> rep = image->bestRepresentation();
    const NSSize size = thumbnailSize(rep == nullptr ? NSSize{} : rep->size());
    if (rep != nullptr)
        rep->setSize(size);
    return drawnImage(size, *image);
}

ImagePointer translucentImageWithAlpha(const ImagePointer& image, float alpha) {
    return image == nullptr ? nullptr : drawnImage(image->size(), *image, {.fraction = alpha});
}

} // namespace kestrine::myUtility
