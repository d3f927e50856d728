#include "platform/appkit/NSImage.h"

#include "platform/host/FailureCollector.h"
#include "platform/imageio/PictureEngine.h"

#include <algorithm>
#include <cmath>

namespace kestrine {

namespace {

/// Whole pixels for a length in points; 0 if nothing can be drawn. Notes a failure if the length is too long.
std::uint32_t canvasPixels(float points) {
    if (points > static_cast<float>(maximumSide))
        noteFailure(sideTooLong());
    if (!(points > 0) || points > static_cast<float>(maximumSide))
        return 0;
    return std::max(1U, static_cast<std::uint32_t>(std::floor(static_cast<double>(points) + 0.5)));
}

Picture scaledPlainly(const Picture& picture, std::uint32_t width, std::uint32_t height) {
    const AxisMap x = AxisMap::filling(picture.width(), width);
    const AxisMap y = AxisMap::filling(picture.height(), height);
    if (x.isIdentity(picture.width()) && y.isIdentity(picture.height()))
        return picture;
    return picture.with(Resampling{x, y, ResampleFilter::triangle, Light::stored});
}

/// nullopt if the fade would change nothing.
std::optional<Fade> fadeFor(float fraction) {
    if (fraction >= 1)
        return std::nullopt;
    return Fade{fraction > 0 ? fraction : 0};
}

} // namespace

std::shared_ptr<NSImage> NSImage::initWithContentsOfFile(const NSString& path) {
    const Result<std::shared_ptr<Source>> source = openPicture(path.utf8());
    if (source)
        return initWithSource(*source);
    noteFailure(source.failure());
    return nullptr;
}

std::shared_ptr<NSImage> NSImage::initWithSource(const std::shared_ptr<Source>& source) {
    const auto reps = NSBitmapImageRep::imageRepsWithSource(source);
    auto image = std::make_shared<NSImage>(reps.front()->size());
    image->representations_.assign(reps.begin(), reps.end());
    image->isAsLoaded_ = true;
    return image;
}

void NSImage::addRepresentation(std::shared_ptr<NSImageRep> rep) {
    representations_.push_back(std::move(rep));
    isAsLoaded_ = false;
}

std::shared_ptr<NSImageRep> NSImage::bestRepresentation() const {
    if (isAsLoaded_)
        return representations_.front();
    const auto pixels = [](const std::shared_ptr<NSImageRep>& rep) {
        return std::uint64_t{rep->picture().width()} * rep->picture().height();
    };
    const auto best = std::ranges::max_element(representations_, {}, pixels);
    return best == representations_.end() ? nullptr : *best;
}

std::shared_ptr<NSBitmapImageRep> NSImage::bitmapOfTIFFRepresentation() const {
    if (representations_.empty())
        return nullptr;
    return std::make_shared<NSBitmapImageRep>(representations_.front()->picture(), size_);
}

std::shared_ptr<const NSData> NSImage::TIFFRepresentation() const {
    const auto bitmap = bitmapOfTIFFRepresentation();
    if (bitmap == nullptr)
        return nullptr;
    ImageProperties properties;
    if (const Object profile = bitmap->valueForProperty(NSImageColorSyncProfileData); profile != nullptr)
        properties.emplace(NSImageColorSyncProfileData, profile);
    return bitmap->representationUsingType(FileType::tiff, properties);
}

void NSImage::keepPixels() const {
    for (const auto& rep : representations_)
        rep->picture().source->keepPixels();
}

std::optional<Failure> NSImage::damage() const {
    for (const auto& rep : representations_)
        if (std::optional<Failure> damage = rep->picture().source->damage())
            return damage;
    return std::nullopt;
}

std::shared_ptr<NSImage> drawnImage(NSSize canvas, const NSImage& image, const Drawing& drawing) {
    auto result = std::make_shared<NSImage>(canvas);
    const std::uint32_t width = canvasPixels(canvas.width), height = canvasPixels(canvas.height);
    const std::shared_ptr<NSImageRep> drawn = image.bestRepresentation();
    if (width == 0 || height == 0)
        return result;
    Picture picture = drawn == nullptr ? Picture{Source::clear(width, height), 0, {}} : drawn->picture();
    if (drawing.turn)
        picture = picture.with(*drawing.turn);
    picture = scaledPlainly(picture, width, height);
    if (const auto fade = fadeFor(drawing.fraction))
        picture = picture.with(*fade);
    if (drawing.onWhite)
        picture = picture.with(Flatten{});
    result->addRepresentation(std::make_shared<NSBitmapImageRep>(std::move(picture), canvas));
    return result;
}

} // namespace kestrine
