#include "_MyClasses/Category/ImageUtility.h"

#include "platform/foundation/NSNumber.h"
#include "platform/imageio/OutputFormats.h"

#include <algorithm>

namespace kestrine::myUtility {

namespace {

bool contains(const std::vector<NSString>& names, const NSString& name) {
    return std::ranges::find(names, name) != names.end();
}

void keepProperty(ImageProperties& properties, const NSString& name, const NSBitmapImageRep* from) {
    if (const Object value = from == nullptr ? nullptr : from->valueForProperty(name); value != nullptr)
        properties.emplace(name, value);
}

ImageProperties propertiesOfPath(const NSImage& image, const NSString& path, const NSBitmapImageRep* bitmap,
                                 const std::vector<NSString>& names) {
    ImageProperties properties;
    if (contains(names, NSImageColorSyncProfileData)) {
        const auto own = bitmap == nullptr ? image.bitmapOfTIFFRepresentation() : nullptr;
        keepProperty(properties, NSImageColorSyncProfileData, bitmap == nullptr ? own.get() : bitmap);
    }
    if (contains(names, NSImageEXIFData) || contains(names, NSImageRGBColorTable)) {
        const auto reps = NSBitmapImageRep::imageRepsWithContentsOfFile(path);
        const NSBitmapImageRep* file = reps.empty() ? nullptr : reps.front().get();
        for (const char16_t* name : {NSImageEXIFData, NSImageRGBColorTable})
            if (contains(names, name))
                keepProperty(properties, name, file);
    }
    return properties;
}

ImageProperties propertiesOfOpened(const std::shared_ptr<Source>& file, const std::vector<NSString>& names) {
    ImageProperties properties;
    for (const char16_t* name : {NSImageColorSyncProfileData, NSImageEXIFData})
        if (contains(names, name))
            properties.emplace(name, std::make_shared<PropertyOfSource>(file));
    if (contains(names, NSImageRGBColorTable)) {
        const NSBitmapImageRep bitmap({file, 0, {}}, {});
        keepProperty(properties, NSImageRGBColorTable, &bitmap);
    }
    return properties;
}

/// A bitmap that suits a format, nil if there is none, and its properties with those kept from the source.
struct BitmapToEncode {
    std::shared_ptr<NSBitmapImageRep> bitmap;
    ImageProperties properties;
};

BitmapToEncode bitmapFor(const NSImage& image, FileType type, float compression, const PictureFile& source,
                         const std::vector<NSString>& names) {
    const OutputFormat& format = outputFormat(type);
    if (!format.holdsAlpha && image.size() == NSSize{0, 0})
        return {};
    auto bitmap = format.holdsAlpha
                      ? image.bitmapOfTIFFRepresentation()
                      : drawnImage(image.size(), image, {.onWhite = true})->bitmapOfTIFFRepresentation();
    if (bitmap == nullptr)
        return {};
    ImageProperties properties;
    if (format.hasQuality)
        properties.emplace(NSImageCompressionFactor, std::make_shared<NSNumber>(compression));
    if (type == FileType::gif)
        properties.emplace(NSImageDitherTransparency, std::make_shared<NSNumber>(true));
    properties.merge(imagePropertiesForFile(image, source, bitmap.get(), names));
    return {std::move(bitmap), std::move(properties)};
}

} // namespace

DataPointer representationInFormat(const NSImage& image, FileType type, float compression,
                                   const PictureFile& source, const std::vector<NSString>& names,
                                   const EncodingRules& rules) {
    const BitmapToEncode made = bitmapFor(image, type, compression, source, names);
    return made.bitmap == nullptr ? nullptr
                                  : made.bitmap->representationUsingType(type, made.properties, rules);
}

bool writeRepresentationInFormat(int file, const NSImage& image, FileType type, float compression,
                                 const PictureFile& source, const std::vector<NSString>& names,
                                 const EncodingRules& rules) {
    const BitmapToEncode made = bitmapFor(image, type, compression, source, names);
    return made.bitmap != nullptr && made.bitmap->writeRepresentation(file, type, made.properties, rules);
}

DataPointer JPEGRepresentationWithCompression(const NSImage& image, float compression,
                                              const PictureFile& source, const std::vector<NSString>& names) {
    return representationInFormat(image, FileType::jpeg, compression, source, names);
}

DataPointer PNGRepresentation(const NSImage& image) { return PNGRepresentationWithSource(image, {}, {}); }

DataPointer PNGRepresentationWithSource(const NSImage& image, const PictureFile& source,
                                        const std::vector<NSString>& names) {
    return representationInFormat(image, FileType::png, 0, source, names);
}

DataPointer GIFRepresentation(const NSImage& image) { return GIFRepresentationWithSource(image, {}, {}); }

DataPointer GIFRepresentationWithSource(const NSImage& image, const PictureFile& source,
                                        const std::vector<NSString>& names) {
    return representationInFormat(image, FileType::gif, 0, source, names);
}

DataPointer TIFFRepresentationWithSource(const NSImage& image, const PictureFile& source,
                                         const std::vector<NSString>& names) {
    return representationInFormat(image, FileType::tiff, 0, source, names);
}

ImageProperties imagePropertiesForFile(const NSImage& image, const PictureFile& source,
                                       const NSBitmapImageRep* bitmap, const std::vector<NSString>& names) {
    if (names.empty() || source.isNone())
        return {};
    return source.opened != nullptr ? propertiesOfOpened(source.opened, names)
                                    : propertiesOfPath(image, *source.path, bitmap, names);
}

} // namespace kestrine::myUtility
