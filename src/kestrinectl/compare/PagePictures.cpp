#include "kestrinectl/compare/PagePictures.h"

#include "platform/imageio/PictureEngine.h"
#include "platform/imageio/Render.h"

#include <algorithm>
#include <cmath>

namespace kestrine {

namespace {

constexpr const char* wholePicture = "Whole picture";
constexpr double viewQuality = 0.92;
constexpr std::uint32_t cropsPerSide = 4; // the side of a crop is this part of the longest side of a view

CropPlace centreOf(const char* name, const CellSquare& square, const CellSums& cells) {
    if (cells.sums.empty())
        return {name, 0.5, 0.5};
    return {name, (square.column + square.columns / 2.0) * CellSums::side / cells.width,
            (square.row + square.rows / 2.0) * CellSums::side / cells.height};
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

PagePicture unchanged(const ComparedImage& image) {
    return {wholePicture, shownMediaType(image.format->type), image.file->bytes(), image.width, image.height};
}

Result<PagePicture> reducedPicture(const Picture& picture, std::uint32_t longestSide) {
    const FileType type = picture.format().hasAlpha ? FileType::png : FileType::jpeg;
    return pictureOf(reduced(picture, longestSide), type, wholePicture);
}

Result<PagePicture> cropAt(const CropPlace& place, const Picture& picture, std::uint32_t side) {
    const Resampling crop = {cropOf(picture.width(), side, place.x), cropOf(picture.height(), side, place.y),
                             ResampleFilter::triangle, Light::stored};
    return pictureOf(picture.with(crop), FileType::png, place.name);
}

} // namespace

std::uint64_t ShownImage::bytesInPage() const {
    std::uint64_t bytes = 0;
    for (const PagePicture& part : parts)
        bytes += (part.file.size() + 2) / 3 * 4;
    return bytes;
}

bool PageView::reduces(const ComparedImage& image) const {
    return std::max(image.width, image.height) > longestSide;
}

PageView viewOf(const Comparison& comparison, std::uint32_t longestSide) {
    PageView view{.longestSide = longestSide, .cropSide = longestSide / cropsPerSide};
    if (std::ranges::none_of(comparison.images,
                             [&](const ComparedImage& image) { return view.reduces(image); }))
        return view;
    const std::uint32_t size = std::max(1U, view.cropSide / CellSums::side);
    const CellSquare loss = greatestSquare(comparison.loss, size);
    const CellSquare detail = greatestSquare(comparison.detail, size, loss);
    view.crops = {{"Centre, full size", 0.5, 0.5},
                  centreOf("Greatest loss, full size", loss, comparison.loss),
                  centreOf("Most detail, full size", detail, comparison.detail)};
    return view;
}

Result<ShownImage> shownImage(const ComparedImage& image, const PageView& view) {
    const bool isKnown = !shownMediaType(image.format->type).empty();
    ShownImage shown{.isReduced = view.reduces(image), .isConverted = !isKnown && !view.reduces(image)};
    if (isKnown && view.crops.empty()) {
        shown.parts = {unchanged(image)};
        return shown;
    }
    const Picture picture{TRY(PictureEngine::current().open(readerOfBytes(image.file->bytes()), nullptr))};
    shown.parts.push_back(shown.isReduced     ? TRY(reducedPicture(picture, view.longestSide))
                          : shown.isConverted ? TRY(pictureOf(picture, FileType::png, wholePicture))
                                              : unchanged(image));
    for (const CropPlace& place : view.crops)
        shown.parts.push_back(TRY(cropAt(place, picture, view.cropSide)));
    return shown;
}

} // namespace kestrine
