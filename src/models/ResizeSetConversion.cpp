#include "models/ResizeSet.h"

#include "_MyClasses/Category/ImageUtility.h"
#include "_MyClasses/Category/StringUtility.h"
#include "_MyClasses/Class/ExifTag/ExifOrientation.h"
#include "platform/imageio/OutputFormats.h"

namespace kestrine {

namespace {

using myUtility::ImagePointer;

// The EXIF orientations that are handled; the half turn and the mirrored ones are not.
constexpr int orientationNeedsCounterclockwise = 8;
constexpr int orientationNeedsClockwise = 6;

ImagePointer turnedUpright(const ImagePointer& image, const PictureFile& file) {
    switch (exifOrientation(file)) {
    case orientationNeedsCounterclockwise:
        return myUtility::clockwiseRotate(image);
    case orientationNeedsClockwise:
        return myUtility::rotate(image);
    default:
        return image;
    }
}

ImagePointer sized(const ImagePointer& image, const ResizeSet& set) {
    const bool HQ = set.highQuality() != 0;
    if (set.width() == 0)
        return myUtility::resizedImageWithHeightRatio(image, set.height(), HQ);
    if (set.height() == 0)
        return myUtility::resizedImageWithWidthRatio(image, set.width(), HQ);
    const NSSize size = {set.width(), set.height()};
    return HQ ? myUtility::resizedImageWithSizeHQ(image, size) : myUtility::resizedImageWithSize(image, size);
}

/// In high quality the longer side grows by the stored value of highQuality, usually 1.
ImagePointer sizedByLongerSide(const ImagePointer& image, const ResizeSet& set) {
    if (image == nullptr)
        return nullptr;
    const bool HQ = set.highQuality() != 0;
    const float length = set.maxSize() + static_cast<float>(set.highQuality());
    const NSSize size = image->size();
    return size.height >= size.width ? myUtility::resizedImageWithHeightRatio(image, length, HQ)
                                     : myUtility::resizedImageWithWidthRatio(image, length, HQ);
}

ImagePointer scaled(const ImagePointer& image, const ResizeSet& set) {
    switch (set.resizeType()) {
    case ResizeTypeSize:
        return sized(image, set);
    case ResizeTypeRatio:
        return myUtility::resizedImageWithRatio(image, set.ratio() / 100.0F, set.highQuality() != 0);
    case ResizeTypeMaxSize:
        return sizedByLongerSide(image, set);
    default:
        return image;
    }
}

std::shared_ptr<const NSData> encoded(const NSImage& image, const ResizeSet& set, const PictureFile& file) {
    std::vector<NSString> names = {NSImageColorSyncProfileData};
    switch (set.formatType()) {
    case FormatTypeJPEG:
        if (set.attachExifData() != 0)
            names.push_back(NSImageEXIFData);
        return myUtility::JPEGRepresentationWithCompression(image, set.compression() / 100.0F, file, names);
    case FormatTypePNG:
        return myUtility::PNGRepresentationWithSource(image, file, names);
    case FormatTypeTIFF:
        return myUtility::TIFFRepresentationWithSource(image, file, names);
    case FormatTypeGIF:
        return myUtility::GIFRepresentationWithSource(image, file, names);
    default:
        return nullptr;
    }
}

} // namespace

NSString ResizeSet::fileNameForPath(const NSString& path) const {
    const NSString stem = path.lastPathComponent().deletingPathExtension();
    const NSString extension = path.pathExtension();
    const bool isUpperCase = extension == extension.uppercased();
    const OutputFormat* format = outputFormatNumbered(formatType_);
    const NSString chosen = format == nullptr ? extension : NSString::fromUTF8(format->extension);
    return stem.appendingPathExtension(isUpperCase ? chosen.uppercased() : chosen);
}

OptionalString ResizeSet::resizeFolderForPath(const OptionalString& folder,
                                              const OptionalString& rootPath) const {
    const OptionalString& base = rootPath ? rootPath : folder;
    if (!base || !folder)
        return std::nullopt;
    NSString relative;
    if (rootPath && *folder != *rootPath)
        relative = StringUtility::removeString(*folder, *rootPath + u"/").value_or(u"");
    const NSString result = chooseFolder_ != 0 && chosenFolderPath_
                                ? *chosenFolderPath_
                                : base->appendingPathComponent(name_.value_or(u""));
    return relative.isEmpty() ? result : result.appendingPathComponent(relative);
}

std::shared_ptr<const NSData> ResizeSet::resizedImageDataWithFile(const PictureFile& file,
                                                                  std::shared_ptr<NSImage> image) const {
    if (image == nullptr) {
        image = NSImage::initWithContentsOfFile(file.path.value_or(u""));
        if (image != nullptr && convertResolution_ != 0)
            myUtility::convertResolution(*image);
    }
    if (image != nullptr && autoRotate_ != 0)
        image = turnedUpright(image, file);
    image = scaled(image, *this);
    return image == nullptr ? nullptr : encoded(*image, *this, file);
}

} // namespace kestrine
