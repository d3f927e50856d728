// TIFF through libtiff: every page a frame, the main picture first. Orientation is not applied.
// Rows stream, and a page that turns out damaged or cut short is a failure.
#include "platform/imageio/tiff/Decoder.h"

#include "platform/imageio/Codecs.h"
#include "platform/imageio/HeldReader.h"
#include "platform/imageio/Plausibility.h"
#include "platform/imageio/exif/ExifFacts.h"
#include "platform/imageio/exif/ExifTags.h"
#include "platform/imageio/tiff/Exif.h"
#include "platform/imageio/tiff/Library.h"
#include "platform/imageio/tiff/PageList.h"
#include "platform/imageio/tiff/Rows.h"

namespace kestrine::tiff {

namespace {

/// CMYK and Lab are converted to sRGB and get its profile; other pages keep their own.
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

/// The maximum for the profiles of all pages together, since many pages can share the bytes of one profile.
constexpr std::uint64_t maxProfileBytes = std::uint64_t{16} << 20;

class Decoder final : public ImageDecoder {
public:
    Decoder(std::shared_ptr<const ByteReader> reader, bool lacksPages)
        : reader_(std::move(reader)), lacksPages_(lacksPages) {}

    /// Pages that cannot be decoded are left out. If the main picture cannot be decoded, the whole file
    /// fails.
    Result<void> readPages(const Structure& structure, const std::vector<ListedPage>& listed) {
        for (const ListedPage& place : listed) {
            if (Result<void> read = readPage(structure, place); !read && pages_.empty())
                return read;
            pictures_ += place.isCopy ? 0 : 1;
        }
        return {};
    }

    Result<RowSourcePointer> rows(std::size_t frame, int) const override {
        if (lacksPages_)
            damage_->note({Reason::truncated, "the TIFF file ends before its last directory"});
        const FileOpener openFile = [this, frame]() -> Result<std::unique_ptr<File>> {
            if (frame == 0)
                if (std::unique_ptr<File> file = mainFile_.take())
                    return file;
            return reopenPage(input(), *pages_[frame]);
        };
        return rowsOfTIFF(openFile, pages_[frame]);
    }

    Result<Bytes> exif() const override { return exif_; }

    Result<Bytes> colorTable() const override { return pages_.front()->colors; }

    FileContents contents() const override {
        return FileContents::several(FileContents::Kind::pages, pictures_);
    }

private:
    Input input() const { return {reader_, damage_}; }

    Result<void> readPage(const Structure& structure, const ListedPage& place) {
        std::unique_ptr<File> file = TRY(File::open(input(), place.directory));
        Page page = TRY(tiff::readPage(*file, place.directory));
        Bytes exif = exifOfTIFF(structure, place.directory);
        if (exif.empty() && place.parent != 0)
            exif = exifOfParent(structure, place, page);
        const bool isMain = pages_.empty();
        TRY(add(std::move(page), readExifFacts(exif).isAdobeRGB));
        if (isMain) {
            exif_ = std::move(exif);
            mainFile_.hold(std::move(file));
        }
        return {};
    }

    /// The EXIF block for a sub-page without one: that of its parent. If the sub-page has no orientation, it
    /// gets that of its parent too.
    static Bytes exifOfParent(const Structure& structure, const ListedPage& place, Page& page) {
        Bytes exif = exifOfTIFF(structure, place.parent);
        const Structure::Directory own = structure.directoryAt(place.directory);
        if (std::ranges::find(own, exiftag::orientation, &Structure::Entry::tag) == own.end())
            page.orientation = readExifFacts(exif).orientation;
        return withOrientation(std::move(exif), page.orientation);
    }

    Result<void> add(Page page, bool isAdobeRGB) {
        if (profileBytes_ += page.icc.size(); profileBytes_ > maxProfileBytes)
            return Failure{Reason::tooLarge, "the TIFF pages have too large profiles"};
        FrameDescription frame{.format = page.format,
                               .resolution = page.resolution,
                               .profile = deliveredProfile(page, isAdobeRGB),
                               .orientation = page.orientation,
                               .isUncompressed = page.isUncompressed(),
                               .storedBitsPerPixel = page.bits * page.samples,
                               .heldBytes = page.heldBytes};
        TRY(checkPlausible(frame, reader_->size()));
        frames_.push_back(std::move(frame));
        pages_.push_back(std::make_shared<const Page>(std::move(page)));
        return {};
    }

    const std::shared_ptr<const ByteReader> reader_;
    const bool lacksPages_;
    std::uint64_t profileBytes_ = 0;                 ///< of all pages that were read
    std::uint32_t pictures_ = 0;                     ///< pages that are not copies, decodable or not
    Bytes exif_;                                     ///< of frame 0
    mutable HeldReader<File> mainFile_;              ///< at the page of frame 0
    std::vector<std::shared_ptr<const Page>> pages_; ///< by frame
};

Result<std::unique_ptr<ImageDecoder>> openPages(std::shared_ptr<const ByteReader> reader,
                                                const Structure& structure, const PageList& listed) {
    if (const Result<Functions>& library = tiffFunctions(); !library)
        return library.failure();
    auto decoder = std::make_unique<Decoder>(std::move(reader), listed.lacksPages);
    TRY(decoder->readPages(structure, listed.pages));
    return std::unique_ptr<ImageDecoder>(std::move(decoder));
}

Result<std::unique_ptr<ImageDecoder>> open(std::shared_ptr<const ByteReader> reader) {
    const Structure structure(reader);
    const PageList listed = TRY(listPages(structure));
    if (listed.holdsSensorData)
        return Failure{Reason::otherFormat, "the TIFF file holds raw data of a camera's sensor"};
    return openPages(std::move(reader), structure, listed);
}

} // namespace

Result<std::unique_ptr<ImageDecoder>> openDevelopedPages(std::shared_ptr<const ByteReader> reader) {
    const Structure structure(reader);
    const PageList listed = TRY(listPages(structure));
    if (listed.pages.empty())
        return Failure{Reason::unsupported, "the TIFF file holds only raw data of a camera's sensor"};
    return openPages(std::move(reader), structure, listed);
}

const ImageCodec codec{"TIFF", Structure::recognises, open, [] { (void)tiffFunctions(); }, &raw::codec};

} // namespace kestrine::tiff
