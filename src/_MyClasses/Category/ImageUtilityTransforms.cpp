#include "_MyClasses/Category/ImageUtility.h"

#include "platform/foundation/NSException.h"

namespace kestrine::myUtility {

namespace {

ImagePointer turned(const ImagePointer& image, QuarterTurn turn) {
    if (image == nullptr)
        return nullptr;
    const NSSize size = image->size();
    return drawnImage({size.height, size.width}, *image, {turn, false});
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

} // namespace kestrine::myUtility
