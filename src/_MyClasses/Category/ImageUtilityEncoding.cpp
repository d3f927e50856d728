#include "_MyClasses/Category/ImageUtility.h"

#include "platform/foundation/NSNumber.h"

#include <algorithm>

namespace kestrine::myUtility {

namespace {

/// Encodes the bitmap with `properties` and those kept from the source.
DataPointer encodedBitmap(const NSImage& image, const NSBitmapImageRep* bitmap, FileType type,
                          ImageProperties properties, const OptionalString& source,
                          const std::vector<NSString>& names) {
    if (bitmap == nullptr)
        return nullptr;
    properties.merge(imagePropertiesForFile(image, source, bitmap, names));
    return bitmap->representationUsingType(type, properties);
}

} // namespace

DataPointer JPEGRepresentationWithCompression(const NSImage& image, float compression,
                                              const OptionalString& source,
                                              const std::vector<NSString>& names) {
    if (image.size() == NSSize{0, 0})
        return nullptr;
    const ImagePointer flattened = drawnImage(image.size(), image, {.onWhite = true});
    return encodedBitmap(image, flattened->bitmapOfTIFFRepresentation().get(), FileType::jpeg,
                         {{NSImageCompressionFactor, std::make_shared<NSNumber>(compression)}}, source,
                         names);
}

DataPointer PNGRepresentation(const NSImage& image) { return PNGRepresentationWithSource(image, {}, {}); }

DataPointer PNGRepresentationWithSource(const NSImage& image, const OptionalString& source,
                                        const std::vector<NSString>& names) {
    return encodedBitmap(image, image.bitmapOfTIFFRepresentation().get(), FileType::png, {}, source, names);
}

DataPointer GIFRepresentation(const NSImage& image) { return GIFRepresentationWithSource(image, {}, {}); }

DataPointer GIFRepresentationWithSource(const NSImage& image, const OptionalString& source,
                                        const std::vector<NSString>& names) {
    return encodedBitmap(image, image.bitmapOfTIFFRepresentation().get(), FileType::gif,
                         {{NSImageDitherTransparency, std::make_shared<NSNumber>(true)}}, source, names);
}

DataPointer TIFFRepresentationWithSource(const NSImage& image, const OptionalString& source,
                                         const std::vector<NSString>& names) {
    return encodedBitmap(image, image.bitmapOfTIFFRepresentation().get(), FileType::tiff, {}, source, names);
}

ImageProperties imagePropertiesForFile(const NSImage& image, const OptionalString& source,
                                       const NSBitmapImageRep* bitmap, const std::vector<NSString>& names) {
    if (names.empty() || !source || source->isEmpty())
        return {};
    const auto isNamed = [&names](const NSString& name) {
        return std::ranges::find(names, name) != names.end();
    };
    ImageProperties properties;
    const auto keep = [&](const NSString& name, const NSBitmapImageRep* from) {
        if (const Object value = from == nullptr ? nullptr : from->valueForProperty(name); value != nullptr)
            properties.emplace(name, value);
    };
    if (isNamed(NSImageColorSyncProfileData)) {
        const auto own = bitmap == nullptr ? image.bitmapOfTIFFRepresentation() : nullptr;
        keep(NSImageColorSyncProfileData, bitmap == nullptr ? own.get() : bitmap);
    }
    if (isNamed(NSImageEXIFData) || isNamed(NSImageRGBColorTable)) {
        const auto reps = NSBitmapImageRep::imageRepsWithContentsOfFile(*source);
        const NSBitmapImageRep* file = reps.empty() ? nullptr : reps.front().get();
        for (const char16_t* name : {NSImageEXIFData, NSImageRGBColorTable})
            if (isNamed(name))
                keep(name, file);
    }
    return properties;
}

} // namespace kestrine::myUtility
