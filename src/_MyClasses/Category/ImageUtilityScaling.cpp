#include "_MyClasses/Category/ImageUtility.h"

#include <cmath>

// The calculations are in single precision; their order matters for rounding.

namespace kestrine::myUtility {

namespace {

/// Smaller aspect corrections are ignored.
constexpr double aspectTolerance = 0.01;

float snappedAspect(float aspect) {
    const double difference = static_cast<double>(std::fabs(1.0F - aspect));
    return difference > aspectTolerance ? aspect : 1.0F;
}

} // namespace

ImagePointer resizedImageWithRatio(const ImagePointer& image, float ratio, bool HQ) {
    if (image == nullptr || ratio == 100.0F)
        return image;
    const NSSize size = image->size();
    const NSSize target = {ratio * size.width, ratio * size.height};
    return HQ ? resizedImageWithSizeHQ(image, target) : resizedImageWithSize(image, target);
}

ImagePointer resizedImageWithWidthRatio(const ImagePointer& image, float width, bool HQ) {
    if (image == nullptr || width == image->size().width)
        return image;
    return resizedImageWithRatio(image, width / image->size().width, HQ);
}

ImagePointer resizedImageWithHeightRatio(const ImagePointer& image, float height, bool HQ) {
    if (image == nullptr || height == image->size().height)
        return image;
    return resizedImageWithRatio(image, height / image->size().height, HQ);
}

ImagePointer resizedImageWithMaxSize(const ImagePointer& image, float longestSide, signed char HQ) {
    if (image == nullptr)
        return nullptr;
    const NSSize size = image->size();
    const float length = longestSide + static_cast<float>(HQ);
    return size.height >= size.width ? resizedImageWithHeightRatio(image, length, HQ != 0)
                                     : resizedImageWithWidthRatio(image, length, HQ != 0);
}

ImagePointer resizedImageWithSize(const ImagePointer& image, NSSize size) {
    return image == nullptr ? nullptr : drawnImage(size, *image);
}

ImagePointer resizedImageWithSizeHQ(const ImagePointer& image, NSSize size) {
    const auto bitmap = image == nullptr ? nullptr : image->bitmapOfTIFFRepresentation();
    if (bitmap == nullptr)
        return nullptr;
    const float width = size.width + 1.0F;
    const float height = size.height + 1.0F;
    const NSSize points = image->size();
    const float scale = height / points.height;
    const float aspect = snappedAspect((width / height) / (points.width / points.height));
    const auto scaled = lanczosScaleTransform(CIImage(bitmap->picture()), scale, aspect);
    if (!scaled)
        return nullptr;
    const CIExtent extent = scaled->extent();
    const auto trimmed = crop(*scaled, {extent.width - 1, extent.height - 1});
    return trimmed ? NSImageRepWithCImage(*trimmed) : nullptr;
}

} // namespace kestrine::myUtility

namespace kestrine {

std::shared_ptr<NSImage> NSImageRepWithCImage(const CIImage& image) {
    const auto rep = std::make_shared<NSCIImageRep>(image);
    auto result = std::make_shared<NSImage>(rep->size());
    result->addRepresentation(rep);
    return result;
}

std::shared_ptr<NSBitmapImageRep> RGBABitmapImageRepWithCImage(const CIImage& image) {
    const NSSize size = {static_cast<float>(image.extent().width), static_cast<float>(image.extent().height)};
    return std::make_shared<NSBitmapImageRep>(image.picture().with(IntoGenericRGBA{}), size);
}

} // namespace kestrine
