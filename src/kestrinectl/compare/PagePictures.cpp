#include "kestrinectl/compare/PagePictures.h"

#include "platform/imageio/PictureEngine.h"
#include "platform/imageio/Render.h"

#include <algorithm>
#include <cmath>

namespace kestrine {

namespace {

constexpr double viewQuality = 0.92;
constexpr std::uint32_t cropsPerSide = 4; // the side of a crop is this part of the longest side of a view

CropPlace centreOf(const char* name, const CellSquare& square, const CellSums& cells) {
    if (cells.sums.empty())
        return {name, 0.5, 0.5};
    return {name, (square.column + square.columns / 2.0) / cells.columns,
            (square.row + square.rows / 2.0) / cells.rows};
}

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
AxisMap cropOf(std::uint32_t side, std::uint32_t cropSide, double centre) {
    const std::uint32_t kept = std::min(side, cropSide);
    const double offset = std::clamp(std::floor(side * centre - kept / 2.0), 0.0, double(side - kept));
    return {.scale = 1, .offset = offset, .outSize = kept};
}

Result<ShownImage> reducedImage(const Picture& picture, std::uint32_t longestSide,
                                std::span<const CropPlace> places) {
    ShownImage shown{.isReduced = true};
    const FileType viewType = picture.format().hasAlpha ? FileType::png : FileType::jpeg;
    shown.parts.push_back(TRY(pictureOf(reduced(picture, longestSide), viewType, "Whole picture, reduced")));
    const std::uint32_t side = cropSideFor(longestSide);
    for (const CropPlace& place : places) {
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

std::uint32_t cropSideFor(std::uint32_t longestSide) { return longestSide / cropsPerSide; }

std::array<CropPlace, 3> cropPlaces(const Comparison& comparison, std::uint32_t cropSide) {
    const std::uint32_t size = std::max(1U, cropSide / CellSums::side);
    const CellSquare loss = greatestSquare(comparison.loss, size);
    const CellSquare detail = greatestSquare(comparison.detail, size, loss);
    return {{{"Centre, full size", 0.5, 0.5},
             centreOf("Greatest loss, full size", loss, comparison.loss),
             centreOf("Most detail, full size", detail, comparison.detail)}};
}

Result<ShownImage> shownImage(const ComparedImage& image, std::uint32_t longestSide,
                              std::span<const CropPlace> places) {
    const bool isLarge = std::max(image.width, image.height) > longestSide;
    const std::string_view mediaType = shownMediaType(image.format->type);
    if (!isLarge && !mediaType.empty())
        return ShownImage{
            .parts = {{"Whole picture", mediaType, image.file->bytes(), image.width, image.height}}};
    const Picture picture{TRY(PictureEngine::current().open(readerOfBytes(image.file->bytes()), nullptr))};
    if (isLarge)
        return reducedImage(picture, longestSide, places);
    return ShownImage{.parts = {TRY(pictureOf(picture, FileType::png, "Whole picture"))},
                      .isConverted = true};
}

} // namespace kestrine
