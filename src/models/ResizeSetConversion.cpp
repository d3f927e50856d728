#include "models/ResizeSet.h"

#include "models/RecipeConversion.h"

namespace kestrine {

namespace {

/// The size rule of a set. In high quality the longer side grows by the stored value of highQuality, usually
/// 1.
SizeRule sizeRule(const ResizeSet& set) {
    switch (set.resizeType()) {
    case ResizeTypeSize:
        return PointSize{set.width(), set.height()};
    case ResizeTypeRatio:
        return PointRatio{set.ratio() / 100.0F};
    case ResizeTypeMaxSize:
        return PointLongest{set.maxSize() + static_cast<float>(set.highQuality())};
    default:
        return Unscaled{};
    }
}

FormatRule formatRule(const ResizeSet& set) {
    const OutputFormat* format = outputFormatNumbered(set.formatType());
    return format == nullptr ? FormatRule{} : FormatRule{FormatRule::Choice::fixed, format->type};
}

ResultPlace placeOf(const ResizeSet& set) {
    ResultPlace place{.replaces = set.replaceFile() != 0, .setName = set.name()};
    if (set.chooseFolder() != 0 && set.chosenFolderPath())
        place.base = set.chosenFolderPath();
    else
        place.subfolder = set.name().value_or(u"");
    return place;
}

} // namespace

ConversionRecipe ResizeSet::recipe() const {
    return {.size = sizeRule(*this),
            .usesLanczos = highQuality_ != 0,
            .convertsResolution = convertResolution_ != 0,
            .upright = autoRotate_ != 0 ? UprightRule::narrow : UprightRule::never,
            .format = formatRule(*this),
            .quality = compression_ / 100.0F,
            .exif = attachExifData_ != 0 ? std::optional(ExifSelection::camera) : std::nullopt,
            .place = placeOf(*this)};
}

NSString ResizeSet::fileNameForPath(const NSString& path) const {
    return resultName(path, outputFormatNumbered(formatType_));
}

OptionalString ResizeSet::resizeFolderForPath(const OptionalString& folder,
                                              const OptionalString& rootPath) const {
    return folderFor(placeOf(*this), folder, rootPath);
}

std::shared_ptr<const NSData> ResizeSet::resizedImageDataWithFile(const PictureFile& file,
                                                                  std::shared_ptr<NSImage> image) const {
    const ConversionRecipe recipe = this->recipe();
    return encodedResult(plannedResult(recipe, file, std::move(image)), recipe, file);
}

ConversionRecipes recipesOf(const ResizeSets& sets) {
    ConversionRecipes recipes;
    for (const auto& set : sets)
        recipes.push_back(set->recipe());
    return recipes;
}

} // namespace kestrine
