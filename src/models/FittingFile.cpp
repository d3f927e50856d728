#include "models/FittingFile.h"

#include "platform/imageio/KeptMetadata.h"

namespace kestrine {

namespace {

/// Whether a result must have exactly the size that the rule asks for.
bool isExact(const SizeRule& rule) {
    if (const auto* points = std::get_if<PointSize>(&rule))
        return points->width != 0 && points->height != 0;
    const auto* size = std::get_if<PixelSize>(&rule);
    return size != nullptr
           && (size->rule == PixelSize::Rule::stretch || size->rule == PixelSize::Rule::cover
               || size->padding);
}

bool hasFittingSize(const ConversionRecipe& recipe, const PlannedResult& plan, const RowFormat& own) {
    if (isExact(recipe.size))
        return own.width == plan.width && own.height == plan.height;
    return own.width <= plan.width && own.height <= plan.height;
}

bool hasProfile(const Picture& picture) {
    const Result<Bytes> profile = picture.source->property(picture, PictureProperty::profile);
    return !profile || !profile->empty();
}

bool hasFittingMetadata(const ConversionRecipe& recipe, const PictureFile& file) {
    if (recipe.exif == ExifSelection::all)
        return true;
    const Result<Bytes> answer = file.opened->answer(metadataOf);
    return answer && holdsNoMoreThan(recipe.exif, *answer);
}

} // namespace

bool fitsAlready(const ConversionRecipe& recipe, const PlannedResult& plan, const PictureFile& file,
                 const NSImage& image, std::uint64_t bytes) {
    if (plan.image == nullptr || plan.format == nullptr || file.opened == nullptr)
        return false;
    const Picture& picture = image.representations().front()->picture();
    const bool isTurned = recipe.upright != UprightRule::never && picture.description().orientation != 1;
    return formatOf(picture.source->codec()) == plan.format && hasFittingSize(recipe, plan, picture.format())
           && !isTurned && !(recipe.background && picture.format().hasAlpha)
           && !(recipe.intoSRGB && hasProfile(picture)) && (recipe.maxBytes == 0 || bytes <= recipe.maxBytes)
           && hasFittingMetadata(recipe, file);
}

} // namespace kestrine
