#include "kestrinectl/compare/PagePictures.h"

#include "platform/imageio/PictureEngine.h"
#include "platform/imageio/Render.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace kestrine {

namespace {

constexpr double viewQuality = 0.92;
constexpr std::uint32_t cropsPerSide = 4; // the side of a crop is this part of the longest side of a view

/// A place in a picture, as fractions of the room that a crop leaves.
struct CropPlace {
    const char* name;
    double x, y;
};
constexpr std::array<CropPlace, 3> cropPlaces = {{
    {"Centre, full size", 0.5, 0.5},
    {"Upper left, full size", 0.2, 0.2},
    {"Lower right, full size", 0.8, 0.8},
}};

/// The media type of a format that all current browsers show; "" for others.
std::string_view shownMediaType(FileType type) {
    switch (type) {
    case FileType::jpeg:
        return "image/jpeg";
    case FileType::png:
        return "image/png";
    case FileType::gif:
        return "image/gif";
    case FileType::webp:
        return "image/webp";
    case FileType::avif:
        return "image/avif";
    default:
        return "";
    }
}

Result<PagePicture> pictureOf(const Picture& picture, FileType type, const std::string& part) {
    Output output{.type = type, .options = {.quality = viewQuality}};
    output.kept.profile = true;
    return PagePicture{part, shownMediaType(type), TRY(render(picture, output)), picture.width(),
                       picture.height()};
}

Picture reduced(const Picture& picture, std::uint32_t longestSide) {
    const std::uint32_t width = picture.width(), height = picture.height();
    const double scale = double(longestSide) / std::max(width, height);
    const auto scaled = [&](std::uint32_t side) {
        return std::max(1U, static_cast<std::uint32_t>(std::lround(side * scale)));
    };
    return picture.with(Resampling{AxisMap::filling(width, scaled(width)),
                                   AxisMap::filling(height, scaled(height)), ResampleFilter::lanczos,
                                   Light::linear});
}

/// Its pixels are copied, not scaled.
AxisMap cropOf(std::uint32_t side, std::uint32_t cropSide, double place) {
    const std::uint32_t kept = std::min(side, cropSide);
    return {.scale = 1, .offset = std::floor((side - kept) * place), .outSize = kept};
}

Result<ShownImage> reducedImage(const Picture& picture, std::uint32_t longestSide) {
    ShownImage shown{.isReduced = true};
    const FileType viewType = picture.format().hasAlpha ? FileType::png : FileType::jpeg;
    shown.parts.push_back(TRY(pictureOf(reduced(picture, longestSide), viewType, "Whole picture, reduced")));
    const std::uint32_t side = longestSide / cropsPerSide;
    for (const CropPlace& place : cropPlaces) {
        const Resampling crop = {cropOf(picture.width(), side, place.x),
                                 cropOf(picture.height(), side, place.y), ResampleFilter::triangle,
                                 Light::stored};
        shown.parts.push_back(TRY(pictureOf(picture.with(crop), FileType::png, place.name)));
    }
    return shown;
}

} // namespace

std::uint64_t ShownImage::bytesInPage() const {
    std::uint64_t bytes = 0;
    for (const PagePicture& part : parts)
        bytes += (part.file.size() + 2) / 3 * 4;
    return bytes;
}

Result<ShownImage> shownImage(const ComparedImage& image, std::uint32_t longestSide) {
    const bool isLarge = std::max(image.width, image.height) > longestSide;
    const std::string_view mediaType = shownMediaType(image.format->type);
    if (!isLarge && !mediaType.empty())
        return ShownImage{
            .parts = {{"Whole picture", mediaType, image.file->bytes(), image.width, image.height}}};
    const Picture picture{TRY(PictureEngine::current().open(readerOfBytes(image.file->bytes()), nullptr))};
    if (isLarge)
        return reducedImage(picture, longestSide);
    return ShownImage{.parts = {TRY(pictureOf(picture, FileType::png, "Whole picture"))},
                      .isConverted = true};
}

} // namespace kestrine
