#include "models/RecipeConversion.h"

#include "_MyClasses/Category/ImageUtility.h"
#include "_MyClasses/Class/ExifTag/ExifOrientation.h"

#include <algorithm>

namespace kestrine {

namespace {

using myUtility::ImagePointer;

// The EXIF orientations that presets handle; the half turn and the mirrored ones are not.
constexpr int orientationNeedsCounterclockwise = 8;
constexpr int orientationNeedsClockwise = 6;

ImagePointer turnedByNarrowRule(const ImagePointer& image, const PictureFile& file) {
    switch (exifOrientation(file)) {
    case orientationNeedsCounterclockwise:
        return myUtility::clockwiseRotate(image);
    case orientationNeedsClockwise:
        return myUtility::rotate(image);
    default:
        return image;
    }
}

/// A new image of one picture, with one point per pixel.
ImagePointer imageOf(Picture picture) {
    const NSSize size = {static_cast<float>(picture.width()), static_cast<float>(picture.height())};
    auto image = std::make_shared<NSImage>(size);
    image->addRepresentation(std::make_shared<NSBitmapImageRep>(std::move(picture), size));
    return image;
}

/// Applies a size rule to an image.
struct Sizing {
    ImagePointer operator()(const Unscaled&) const { return image; }
    ImagePointer operator()(const PointSize& rule) const {
        if (rule.width == 0)
            return myUtility::resizedImageWithHeightRatio(image, rule.height, HQ);
        if (rule.height == 0)
            return myUtility::resizedImageWithWidthRatio(image, rule.width, HQ);
        const NSSize size = {rule.width, rule.height};
        return HQ ? myUtility::resizedImageWithSizeHQ(image, size)
                  : myUtility::resizedImageWithSize(image, size);
    }
    ImagePointer operator()(const PointRatio& rule) const {
        return myUtility::resizedImageWithRatio(image, rule.ratio, HQ);
    }
    ImagePointer operator()(const PointLongest& rule) const {
        if (image == nullptr)
            return nullptr;
        const NSSize size = image->size();
        return size.height >= size.width ? myUtility::resizedImageWithHeightRatio(image, rule.length, HQ)
                                         : myUtility::resizedImageWithWidthRatio(image, rule.length, HQ);
    }
    ImagePointer operator()(const PixelSize& rule) const {
        const auto bitmap = image == nullptr ? nullptr : image->bitmapOfTIFFRepresentation();
        if (bitmap == nullptr)
            return nullptr;
        const Picture& picture = bitmap->picture();
        const PixelGeometry geometry = geometryFor(rule, picture.width(), picture.height(), enlarges);
        if (geometry.x.isIdentity(picture.width()) && geometry.y.isIdentity(picture.height()))
            return imageOf(picture);
        const bool reduces = geometry.x.isReduction() || geometry.y.isReduction();
        return imageOf(picture.with(Resampling{geometry.x, geometry.y, ResampleFilter::lanczos,
                                               reduces ? Light::linear : Light::stored}));
    }

    const ImagePointer& image;
    const bool HQ;
    const bool enlarges;
};

/// Whether `image` has a longer side than `original`, in pixels.
bool isEnlarged(const NSImage& image, const NSImage& original) {
    const auto after = image.bestRepresentation(), before = original.bestRepresentation();
    return after != nullptr && before != nullptr
           && (after->pixelsWide() > before->pixelsWide() || after->pixelsHigh() > before->pixelsHigh());
}

ImagePointer sized(const ImagePointer& image, const ConversionRecipe& recipe) {
    const ImagePointer result = std::visit(Sizing{image, recipe.usesLanczos, recipe.enlarges}, recipe.size);
    const bool isUnwanted =
        !recipe.enlarges && image != nullptr && result != nullptr && isEnlarged(*result, *image);
    return isUnwanted ? image : result;
}

ImagePointer loadedImage(const ConversionRecipe& recipe, const PictureFile& file) {
    const ImagePointer image = NSImage::initWithContentsOfFile(file.path.value_or(u""));
    if (image != nullptr && recipe.convertsResolution)
        myUtility::convertResolution(*image);
    return image;
}

/// Null if nothing is written. `image` is that of the file, or null.
const OutputFormat* formatOf(const FormatRule& rule, const ImagePointer& image) {
    if (rule.choice != FormatRule::Choice::ofSource || image == nullptr)
        return namedFormat(rule);
    const Picture& picture = image->bestRepresentation()->picture();
    const ImageCodec* codec = picture.source->codec();
    const auto own =
        std::ranges::find(outputFormats(), codec == nullptr ? "" : codec->name, &OutputFormat::title);
    if (own != outputFormats().end())
        return &*own;
    return &outputFormat(picture.format().hasAlpha ? FileType::png : FileType::jpeg);
}

bool hasExtensionOf(const OutputFormat& format, const NSString& extension) {
    const std::string lower = extension.lowercased().utf8();
    return lower == format.extension
           || std::ranges::find(format.otherExtensions, lower) != format.otherExtensions.end();
}

} // namespace

const OutputFormat* namedFormat(const FormatRule& rule) {
    return rule.choice == FormatRule::Choice::fixed ? &outputFormat(rule.type) : nullptr;
}

PlannedResult plannedResult(const ConversionRecipe& recipe, const PictureFile& file,
                            std::shared_ptr<NSImage> image) {
    if (image == nullptr)
        image = loadedImage(recipe, file);
    if (image != nullptr && recipe.turnsByNarrowRule)
        image = turnedByNarrowRule(image, file);
    const OutputFormat* format = formatOf(recipe.format, image);
    image = sized(image, recipe);
    if (image == nullptr || format == nullptr)
        return {std::move(image), format};
    const auto bitmap = format->holdsAlpha ? image->bitmapOfTIFFRepresentation()
                                           : drawnImage(image->size(), *image)->bitmapOfTIFFRepresentation();
    const auto pixels = bitmap == nullptr ? RowFormat{} : bitmap->picture().format();
    return {std::move(image), format, pixels.width, pixels.height};
}

std::shared_ptr<const NSData> encodedResult(const PlannedResult& plan, const ConversionRecipe& recipe,
                                            const PictureFile& file) {
    if (plan.image == nullptr || plan.format == nullptr)
        return nullptr;
    std::vector<NSString> names = {NSImageColorSyncProfileData};
    if (recipe.keepsExif && plan.format->holdsExif)
        names.push_back(NSImageEXIFData);
    return myUtility::representationInFormat(*plan.image, plan.format->type, recipe.quality, file, names);
}

NSString resultName(const NSString& path, const OutputFormat* format, bool keepsExtension) {
    const NSString stem = path.lastPathComponent().deletingPathExtension();
    const NSString extension = path.pathExtension();
    const bool isUpperCase = extension == extension.uppercased();
    if (format == nullptr || (keepsExtension && hasExtensionOf(*format, extension)))
        return stem.appendingPathExtension(extension);
    const NSString chosen = NSString::fromUTF8(format->extension);
    return stem.appendingPathExtension(isUpperCase ? chosen.uppercased() : chosen);
}

} // namespace kestrine
