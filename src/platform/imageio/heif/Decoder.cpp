// Reads HEIF files with HEVC pictures (HEIC) and with AV1 pictures (AVIF). The boxes are read here; libde265
// and dav1d decode the compressed pictures in them. A row of tiles, or an untiled picture, is held in memory.

#include "platform/coregraphics/ToneMapping.h"
#include "platform/imageio/Codecs.h"
#include "platform/imageio/Plausibility.h"
#include "platform/imageio/exif/ExifFacts.h"
#include "platform/imageio/heif/CodedPicture.h"
#include "platform/imageio/heif/Movie.h"
#include "platform/imageio/heif/NodeRows.h"

#include <algorithm>
#include <array>
#include <limits>

namespace kestrine::heif {

namespace {

constexpr std::uint64_t maxExifBytes = std::uint64_t{4} << 20;

/// The EXIF block of the item that describes `id`, from the TIFF header on; empty if there is none. Its
/// first four bytes say where the TIFF header is.
Bytes exifOf(const ItemTable& table, ItemID id, const ByteReader& reader) {
    for (const ItemID source : table.references.sources(fourCC("cdsc"), id)) {
        const Item* item = table.item(source);
        if (item == nullptr || item->type != fourCC("Exif") || item->unreadable)
            continue;
        std::uint64_t length = 0;
        for (const FileRange& range : item->data)
            length += range.length;
        Result<Bytes> data = length <= maxExifBytes ? readRanges(reader, item->data) : Bytes();
        if (!data)
            continue;
        Cursor cursor(*data);
        cursor.skip(cursor.u32());
        if (cursor.isSound() && !cursor.rest().empty())
            return {cursor.rest().begin(), cursor.rest().end()};
    }
    return {};
}

/// The node whose colours count: the picture's own description, else that of its first part.
const PictureNode& describedNode(const PictureNode& root) {
    const PictureNode* node = &root;
    while (!node->properties.points && node->properties.icc.empty() && !node->parts.empty())
        node = node->parts.front().get();
    return *node;
}

/// Gives the picture its model and its profile. Returns how an HDR picture is stored: it becomes SDR, for
/// which the profile is right, and gets 16 bits.
std::optional<HDREncoding> describeColors(FrameDescription& frame, const PictureNode& root,
                                          const ByteReader& reader, bool isAdobeRGB) {
    frame.format.model = root.isMonochrome ? ColorModel::gray : ColorModel::rgb;
    const PictureNode& node = describedNode(root);
    const PictureProperties& properties = node.properties;
    if (!properties.icc.empty()) {
        frame.profile = ColorProfile::fromICC(properties.icc, frame.format.model);
        if (!frame.profile && root.isMonochrome) {
            frame.profile = ColorProfile::fromICC(properties.icc, ColorModel::rgb);
            frame.format.model = frame.profile ? ColorModel::rgb : ColorModel::gray;
        }
        if (frame.profile)
            return std::nullopt;
    }
    std::optional<CodingPoints> points = properties.points;
    if (!points && node.kind == PictureNode::Kind::coded) {
        constexpr std::uint64_t enough = 1024;
        const FileRange& data = node.data.front();
        const Result<Bytes> start = readRanges(reader, {{data.offset, std::min(data.length, enough)}});
        points = pointsInHeader(properties.coding, start ? ByteView(*start) : ByteView());
    }
    if (!points) {
        if (isAdobeRGB && frame.format.model == ColorModel::rgb)
            frame.profile = ColorProfile::adobeRGB();
        return std::nullopt;
    }
    frame.profile = profileOf(*points, frame.format.model);
    const std::optional<HDREncoding> range = hdrEncodingOf(*points, root.properties.brightestLight);
    if (range)
        frame.format.depth = SampleDepth::bits16;
    return range;
}

/// How many pictures a viewer would show: those that are not parts of others, previews or auxiliary.
std::uint32_t countPictures(const ItemTable& table) {
    const ItemReferences& references = table.references;
    std::uint32_t count = 0;
    for (const auto& [id, item] : table.items) {
        const bool isPart = !references.sources(fourCC("dimg"), id).empty();
        const bool isSecondary = !references.targets(fourCC("thmb"), id).empty()
                                 || !references.targets(fourCC("auxl"), id).empty();
        if (isPictureType(item.type) && !item.isHidden && !isPart && !isSecondary)
            ++count;
    }
    return count;
}

/// Fails if the library for any part is missing. A file with a brand of AVIF `isAVIF`, so that the other
/// library was not opened for it.
Result<void> requireLibraries(const PictureNode& node, bool isAVIF) {
    const CodingSetup::Kind kind = node.properties.coding.kind;
    if (isAVIF && kind == CodingSetup::Kind::hevc)
        return Failure{Reason::unsupported, "AVIF files with HEVC pictures are not supported"};
    TRY(requireLibrary(kind));
    for (const PictureNodePointer& part : node.parts)
        TRY(requireLibraries(*part, isAVIF));
    return node.alpha ? requireLibraries(*node.alpha, isAVIF) : Result<void>();
}

/// Checks all pictures that must be decoded for this one; checkPlausible() checks only the result.
Result<void> checkParts(const PictureNode& root, std::uint64_t fileBytes) {
    constexpr std::uint64_t bytesPerPixel = 3, maxPixels = std::uint64_t{1} << 60;
    if (!isPlausible(bytesPerPixel * std::min(root.codedPixels, maxPixels), fileBytes))
        return Failure{Reason::implausible, "the file is too short for the pictures that it consists of"};
    return {};
}

class Decoder final : public ImageDecoder {
public:
    Decoder(std::shared_ptr<const ByteReader> reader, TopLevelBoxes boxes, bool isAVIF)
        : reader_(std::move(reader)), header_(std::make_shared<Header>()), isAVIF_(isAVIF) {
        header_->boxes = std::move(boxes);
    }

    Result<void> open() {
        const ItemTable table =
            header_->boxes.meta ? TRY(readItemTable(*header_->boxes.meta, reader_->size())) : ItemTable();
        const Result<Movie> movie = header_->boxes.moov ? readMovie(*header_->boxes.moov, reader_->size())
                                                        : damagedFile("it has no pictures");
        if (table.primary != 0) {
            TRY(openItem(table));
        } else {
            if (!movie)
                return movie.failure();
            header_->picture = movie->firstFrame;
        }
        if (movie && movie->frames > 1)
            contents_ = {FileContents::Kind::animation, movie->frames};
        return describe(*header_->picture);
    }

    Result<RowSourcePointer> rows(std::size_t, int) const override {
        const PictureNodePointer picture(header_, header_->picture.get()); // keeps the boxes
        RowSourcePointer rows = rowsOfPicture(picture, reader_, frames_.front().format);
        return hdr_ ? rowsInSDR(std::move(rows), *hdr_) : std::move(rows);
    }

    Result<Bytes> exif() const override { return exif_; }

    FileContents contents() const override { return contents_; }

private:
    /// The picture, and the boxes that its properties are views into.
    struct Header {
        TopLevelBoxes boxes;
        PictureNodePointer picture;
    };

    Result<void> openItem(const ItemTable& table) {
        header_->picture = TRY(readPictureTree(table, table.primary, *reader_));
        exif_ = uprightExif(exifOf(table, table.primary, *reader_));
        if (const std::uint32_t pictures = countPictures(table); pictures > 1)
            contents_ = {FileContents::Kind::pages, pictures};
        return {};
    }

    Result<void> describe(const PictureNode& root) {
        TRY(requireLibraries(root, isAVIF_));
        TRY(checkParts(root, reader_->size()));
        const ExifFacts facts = readExifFacts(exif_);
        const Size size = root.placement.size();
        FrameDescription frame{.format = {.width = size.width,
                                          .height = size.height,
                                          .hasAlpha = root.hasAlpha,
                                          .depth = root.bits > 8 ? SampleDepth::bits16 : SampleDepth::bits8},
                               .resolution = facts.resolution.value_or(Resolution{})};
        frame.quarterTurns = root.placement.quarterTurns();
        hdr_ = describeColors(frame, root, *reader_, facts.isAdobeRGB);
        frame.heldBytes = bytesHeldFor(root, frame.format);
        frames_.push_back(std::move(frame));
        return {};
    }

    const std::shared_ptr<const ByteReader> reader_;
    const std::shared_ptr<Header> header_;
    const bool isAVIF_;
    std::optional<HDREncoding> hdr_; ///< of an HDR picture, which becomes SDR
    Bytes exif_;
    FileContents contents_;
};

Result<std::unique_ptr<ImageDecoder>> open(std::shared_ptr<const ByteReader> reader, bool isAVIF) {
    TopLevelBoxes boxes = TRY(readTopLevelBoxes(*reader));
    auto decoder = std::make_unique<Decoder>(std::move(reader), std::move(boxes), isAVIF);
    TRY(decoder->open());
    return std::unique_ptr<ImageDecoder>(std::move(decoder));
}

/// The brands in the first bytes of a file, which begins with the box "ftyp".
std::vector<FourCC> brandsIn(ByteView head) {
    Cursor cursor(head);
    const std::uint32_t size = cursor.u32();
    if (cursor.u32() != fourCC("ftyp") || size < 16)
        return {};
    std::vector<FourCC> brands{cursor.u32()};
    cursor.skip(4); // the version
    const std::size_t count = std::min<std::size_t>(cursor.rest().size(), size - 16) / 4;
    for (std::size_t i = 0; i < count; ++i)
        brands.push_back(cursor.u32());
    return brands;
}

bool hasBrand(ByteView head, std::initializer_list<FourCC> wanted) {
    const std::vector<FourCC> brands = brandsIn(head);
    return std::ranges::find_first_of(brands, wanted) != brands.end();
}

bool hasHEVCBrand(ByteView head) {
    return hasBrand(head, {fourCC("heic"), fourCC("heix"), fourCC("heim"), fourCC("heis"), fourCC("hevc"),
                           fourCC("hevx"), fourCC("hevm"), fourCC("hevs")});
}

bool recognisesAVIF(ByteView head) {
    return hasBrand(head, {fourCC("avif"), fourCC("avis")}) && !hasHEVCBrand(head);
}

/// Also files that do not say how their pictures are compressed, or that have pictures of both kinds.
bool recognisesHEIC(ByteView head) {
    return !recognisesAVIF(head)
           && (hasHEVCBrand(head) || hasBrand(head, {fourCC("mif1"), fourCC("mif2"), fourCC("msf1")}));
}

Result<std::unique_ptr<ImageDecoder>> openHEIC(std::shared_ptr<const ByteReader> reader) {
    return open(std::move(reader), false);
}
Result<std::unique_ptr<ImageDecoder>> openAVIF(std::shared_ptr<const ByteReader> reader) {
    return open(std::move(reader), true);
}

} // namespace

const ImageCodec heicCodec{"HEIC", recognisesHEIC, openHEIC, [] {
                               (void)requireLibrary(CodingSetup::Kind::hevc);
                               (void)requireLibrary(CodingSetup::Kind::av1);
                           }};
const ImageCodec avifCodec{"AVIF", recognisesAVIF, openAVIF,
                           [] { (void)requireLibrary(CodingSetup::Kind::av1); }};

} // namespace kestrine::heif
