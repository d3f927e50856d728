#include "models/RecipeConversion.h"

#include "_MyClasses/Category/ImageUtility.h"
#include "_MyClasses/Class/ExifTag/ExifOrientation.h"
#include "platform/host/FailureCollector.h"
#include "platform/imageio/exif/Orientation.h"

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

/// A new image of one picture.
ImagePointer imageOf(Picture picture, NSSize points) {
    auto image = std::make_shared<NSImage>(points);
    image->addRepresentation(std::make_shared<NSBitmapImageRep>(std::move(picture), points));
    return image;
}

/// The picture as an image with one point per pixel.
ImagePointer imageOf(Picture picture) {
    const NSSize points = {static_cast<float>(picture.width()), static_cast<float>(picture.height())};
    return imageOf(std::move(picture), points);
}

ImagePointer turnedUpright(const ImagePointer& image, const PictureFile& file, UprightRule rule) {
    if (rule == UprightRule::narrow)
        return turnedByNarrowRule(image, file);
    const auto bitmap = image->bitmapOfTIFFRepresentation();
    const int orientation = bitmap == nullptr ? 1 : bitmap->picture().description().orientation;
    if (rule == UprightRule::never || orientation == 1)
        return image;
    const UprightTurn turn = uprightTurnFor(orientation);
    Picture picture = turn.isMirrored ? bitmap->picture().with(Mirror{}) : bitmap->picture();
    for (int i = 0; i < turn.quarterTurns; ++i)
        picture = picture.with(QuarterTurn::clockwise);
    const NSSize size = image->size();
    return imageOf(std::move(picture), turn.exchangesSides() ? NSSize{size.height, size.width} : size);
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
        return imageOf(scaled(picture, geometry));
    }

    static Picture scaled(const Picture& picture, const PixelGeometry& geometry) {
        if (geometry.x.isIdentity(picture.width()) && geometry.y.isIdentity(picture.height()))
            return picture;
        const bool reduces = geometry.x.isReduction() || geometry.y.isReduction();
        return picture.with(Resampling{geometry.x, geometry.y, ResampleFilter::lanczos,
                                       reduces ? Light::linear : Light::stored});
    }

    const ImagePointer& image;
    const bool HQ;
    const bool enlarges;
};

/// The margins that a recipe adds to a picture of `original`'s size, and their colour; nullopt for none.
std::optional<Pad> paddingFor(const ConversionRecipe& recipe, const Picture& original) {
    const auto* size = std::get_if<PixelSize>(&recipe.size);
    if (size == nullptr || !size->padding)
        return std::nullopt;
    const Margins margins = geometryFor(*size, original.width(), original.height(), recipe.enlarges).margins;
    return Pad{margins.left, margins.top, margins.right, margins.bottom, *size->padding};
}

/// Applies what follows scaling: colour space, background, margins. `original` is the picture before scaling.
ImagePointer finished(const ImagePointer& image, const Picture& original, const ConversionRecipe& recipe) {
    const std::optional<Pad> padding = paddingFor(recipe, original);
    if (!recipe.intoSRGB && !recipe.background && !padding)
        return image;
    Picture picture = image->bitmapOfTIFFRepresentation()->picture();
    const bool needsColor =
        (recipe.background && !recipe.background->isGray()) || (padding && !padding->color.isGray());
    if (recipe.intoSRGB || (needsColor && picture.format().model == ColorModel::gray))
        picture = picture.with(IntoSRGB{});
    if (recipe.background)
        picture = picture.with(Flatten{*recipe.background});
    return padding ? imageOf(picture.with(*padding)) : imageOf(std::move(picture), image->size());
}

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
    if (const OutputFormat* own = formatOf(picture.source->codec()))
        return own;
    return &outputFormat(picture.format().hasAlpha ? FileType::png : FileType::jpeg);
}

/// Whether viewers of the result do not see the picture upright although the file says how.
bool isNotUpright(const NSImage& image, const ConversionRecipe& recipe, const OutputFormat& format) {
    const Picture& picture = image.representations().front()->picture();
    const bool saysOrientation = recipe.exif && holdsExif(format, *recipe.exif);
    return picture.description().orientation != 1 && !picture.wasTurned() && !saysOrientation;
}

/// What the result keeps of the source beside the pixels.
std::vector<NSString> keptProperties(const PlannedResult& plan, const ConversionRecipe& recipe) {
    std::vector<NSString> names = {NSImageColorSyncProfileData};
    if (recipe.exif && holdsExif(*plan.format, *recipe.exif))
        names.push_back(NSImageEXIFData);
    return names;
}

EncodingRules rulesOf(const ConversionRecipe& recipe) {
    return {recipe.exif.value_or(ExifSelection::camera), recipe.maxBytes, recipe.isLossless,
            recipe.isProgressive, recipe.effort};
}

} // namespace

const OutputFormat* namedFormat(const FormatRule& rule) {
    return rule.choice == FormatRule::Choice::fixed ? &outputFormat(rule.type) : nullptr;
}

PlannedResult plannedResult(const ConversionRecipe& recipe, const PictureFile& file,
                            std::shared_ptr<NSImage> image) {
    if (image == nullptr)
        image = loadedImage(recipe, file);
    if (image != nullptr)
        image = turnedUpright(image, file, recipe.upright);
    const OutputFormat* format = formatOf(recipe.format, image);
    const ImagePointer original = image;
    image = sized(image, recipe);
    if (image == nullptr || image->representations().empty() || format == nullptr)
        return {std::move(image), format};
    image = finished(image, original->bitmapOfTIFFRepresentation()->picture(), recipe);
    const auto bitmap = format->holdsAlpha ? image->bitmapOfTIFFRepresentation()
                                           : drawnImage(image->size(), *image)->bitmapOfTIFFRepresentation();
    const auto pixels = bitmap == nullptr ? RowFormat{} : bitmap->picture().format();
    const bool staysTurned = isNotUpright(*image, recipe, *format);
    return {std::move(image), format, pixels.width, pixels.height, staysTurned};
}

bool mayBeEncoded(const PlannedResult& plan, const ConversionRecipe& recipe) {
    if (plan.image == nullptr || plan.format == nullptr || plan.width == 0)
        return false;
    if (recipe.isLossless && plan.format->hasQuality && !plan.format->hasLossless) {
        noteFailure({Reason::unsupported,
                     "a " + std::string(plan.format->title) + " cannot be lossless; choose another format"});
        return false;
    }
    const Result<void> possible = checkSize(plan.width, plan.height, *plan.format);
    if (!possible)
        noteFailure(possible.failure());
    return possible.ok();
}

std::shared_ptr<const NSData> encodedResult(const PlannedResult& plan, const ConversionRecipe& recipe,
                                            const PictureFile& file) {
    if (!mayBeEncoded(plan, recipe))
        return nullptr;
    return myUtility::representationInFormat(*plan.image, plan.format->type, recipe.quality, file,
                                             keptProperties(plan, recipe), rulesOf(recipe));
}

bool writeResult(int result, const PlannedResult& plan, const ConversionRecipe& recipe,
                 const PictureFile& file) {
    return mayBeEncoded(plan, recipe)
           && myUtility::writeRepresentationInFormat(result, *plan.image, plan.format->type, recipe.quality,
                                                     file, keptProperties(plan, recipe), rulesOf(recipe));
}

NSString resultName(const NSString& path, const OutputFormat* format, bool keepsExtension) {
    const NSString stem = path.lastPathComponent().deletingPathExtension();
    const NSString extension = path.pathExtension();
    const bool hasCase = extension.lowercased() != extension.uppercased(); // false for "001" and ""
    const bool isUpperCase = extension == extension.uppercased() && (hasCase || !keepsExtension);
    if (format == nullptr || (keepsExtension && hasExtension(*format, extension.utf8())))
        return stem.appendingPathExtension(extension);
    const NSString chosen = NSString::fromUTF8(format->extension);
    return stem.appendingPathExtension(isUpperCase ? chosen.uppercased() : chosen);
}

} // namespace kestrine
