// TIFF through libtiff: every page a frame, the main picture first. Orientation is not applied.
// Rows stream, and a page that turns out damaged or cut short is a failure.
#include "platform/imageio/Codecs.h"
#include "platform/imageio/exif/ExifBlock.h"
#include "platform/imageio/tiff/Exif.h"
#include "platform/imageio/tiff/PageList.h"
#include "platform/imageio/tiff/Rows.h"

namespace kestrine::tiff {

namespace {

/// CMYK and Lab have become sRGB and say so; other pages keep their own profile.
std::optional<ColorProfile> deliveredProfile(const Page& page, bool isAdobeRGB) {
    if (page.color == Color::cmyk || page.color == Color::cieLab || page.color == Color::iccLab)
        return ColorProfile::sRGB();
    if (!page.icc.empty())
        if (std::optional<ColorProfile> profile = ColorProfile::fromICC(page.icc, page.format.model))
            return profile;
    if (isAdobeRGB && page.format.model == ColorModel::rgb)
        return ColorProfile::adobeRGB();
    return std::nullopt;
}

class Decoder final : public ImageDecoder {
public:
    Decoder(std::shared_ptr<const ByteReader> reader, Structure structure)
        : reader_(std::move(reader)), structure_(std::move(structure)) {}

    /// Pages that cannot be shown are left out, but for the main picture: without it the file gives nothing.
    Result<void> readPages(const std::vector<ListedPage>& listed) {
        for (const ListedPage& place : listed) {
            Result<Page> page = readPage(place.directory);
            if (!page && pages_.empty())
                return page.failure();
            if (page)
                add(std::move(*page), place);
        }
        mainPage_ = listed.front();
        return {};
    }

    Result<RowSourcePointer> rows(std::size_t frame, int) const override {
        return rowsOfTIFF(input(), pages_[frame]);
    }

    Result<Bytes> exif() const override { return exifOf(mainPage_); }

    Result<Bytes> colorTable() const override { return pages_.front()->colors; }

private:
    Input input() const { return {reader_, damage_}; }

    Result<Page> readPage(std::uint64_t directory) const {
        const std::unique_ptr<File> file = TRY(File::open(input(), directory));
        return tiff::readPage(*file, directory);
    }

    /// Of a sub-page that has none, that of its page.
    Bytes exifOf(const ListedPage& page) const {
        Bytes exif = exifOfTIFF(structure_, page.directory);
        return exif.empty() && page.parent != 0 ? exifOfTIFF(structure_, page.parent) : exif;
    }

    void add(Page page, const ListedPage& place) {
        const bool isAdobeRGB = readExifFacts(exifOf(place)).isAdobeRGB;
        frames_.push_back({.format = page.format,
                           .resolution = page.resolution,
                           .profile = deliveredProfile(page, isAdobeRGB),
                           .isUncompressed = page.isUncompressed()});
        pages_.push_back(std::make_shared<const Page>(std::move(page)));
    }

    const std::shared_ptr<const ByteReader> reader_;
    const Structure structure_;
    ListedPage mainPage_;
    std::vector<std::shared_ptr<const Page>> pages_; ///< by frame
};

Result<std::unique_ptr<ImageDecoder>> open(std::shared_ptr<const ByteReader> reader) {
    if (const Result<Functions>& library = tiffFunctions(); !library)
        return library.failure();
    Structure structure(reader);
    const std::vector<ListedPage> listed = TRY(listPages(structure));
    auto decoder = std::make_unique<Decoder>(std::move(reader), std::move(structure));
    TRY(decoder->readPages(listed));
    return std::unique_ptr<ImageDecoder>(std::move(decoder));
}

} // namespace

const ImageCodec codec{"TIFF", Structure::recognises, open};

} // namespace kestrine::tiff
