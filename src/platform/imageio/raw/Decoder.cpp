// Reads camera raw files: the camera's own development if the file holds it in (nearly) full size, else a
// development by LibRaw. A smaller preview is never shown. Orientation is applied.

#include "platform/imageio/tiff/Decoder.h"
#include "platform/coregraphics/RowStages.h"
#include "platform/imageio/Codecs.h"
#include "platform/imageio/PartReader.h"
#include "platform/imageio/WholePicture.h"
#include "platform/imageio/exif/ExifFacts.h"
#include "platform/imageio/exif/Orientation.h"
#include "platform/imageio/raw/Development.h"
#include "platform/imageio/raw/Header.h"
#include "platform/imageio/tiff/Library.h"
#include "platform/imageio/tiff/Structure.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace kestrine::raw {

namespace {

using DecoderPointer = std::unique_ptr<ImageDecoder>;

/// A picture as the sensor lay becomes one that is upright.
class UprightDecoder : public ImageDecoder {
public:
    FileContents contents() const final { return {FileContents::Kind::raw}; }
    Result<Bytes> exif() const final { return exif_; }

protected:
    UprightDecoder(FrameDescription frame, int orientation, Bytes exif)
        : turn_(uprightTurnFor(orientation)), exif_(uprightExif(std::move(exif))) {
        frame.quarterTurns = turn_.quarterTurns;
        frame.orientation = 1;
        frame.resolution = readExifFacts(exif_).resolution.value_or(Resolution{});
        if (turn_.isMirrored)
            frame.maxHalvings = 0; // the pixels of the reduced picture would begin at the other edge
        if (turn_.exchangesSides())
            std::swap(frame.format.width, frame.format.height);
        frames_.push_back(std::move(frame));
    }

    RowSourcePointer placed(RowSourcePointer rows) const {
        return turn_.isMirrored ? mirroredRows(std::move(rows)) : std::move(rows);
    }

private:
    const UprightTurn turn_;
    const Bytes exif_;
};

/// The camera's own development.
class PreviewDecoder final : public UprightDecoder {
public:
    PreviewDecoder(DecoderPointer preview, FrameDescription frame, int orientation, Bytes exif)
        : UprightDecoder(std::move(frame), orientation, std::move(exif)), preview_(std::move(preview)) {}

    Result<RowSourcePointer> rows(std::size_t, int halvings) const override {
        return placed(TRY(preview_->rows(0, halvings)));
    }

    std::optional<Failure> damage() const override { return preview_->damage(); }

private:
    const DecoderPointer preview_;
};

class DevelopingDecoder final : public UprightDecoder {
public:
    DevelopingDecoder(const Functions& library, std::shared_ptr<const ByteReader> reader,
                      const Negative& negative, int orientation, Bytes exif)
        : UprightDecoder(frameOf(negative), orientation, std::move(exif)), library_(library),
          reader_(std::move(reader)), negative_(negative) {}

    Result<RowSourcePointer> rows(std::size_t, int halvings) const override {
        return placed(rowsOfWholePicture(
            negative_.halved(halvings),
            [library = &library_, reader = reader_, negative = negative_, halvings, damage = damage_] {
                return develop(*library, reader, negative, halvings, *damage);
            }));
    }

private:
    static FrameDescription frameOf(const Negative& negative) {
        FrameDescription frame{
            .format = negative.format, .maxHalvings = negative.maxHalvings, .heldBytes = negative.heldBytes};
        if (negative.format.model == ColorModel::rgb)
            frame.profile = ColorProfile::sRGB();
        return frame;
    }

    const Functions& library_;
    const std::shared_ptr<const ByteReader> reader_;
    const Negative negative_;
};

Sides sidesOf(const ImageDecoder& decoder) {
    const RowFormat& format = decoder.frames().front().format;
    return {format.width, format.height};
}

/// The largest preview that is a JPEG file of at least the needed size; null if there is none.
DecoderPointer largestPreview(const std::shared_ptr<const ByteReader>& reader, const Header& header,
                              Sides sensor) {
    DecoderPointer best;
    const auto pixelsOf = [](const ImageDecoder& one) { return one.frames().front().format.pixels(); };
    for (const FileRange& place : header.previews) {
        const auto part = readerOfPart(reader, place.offset, place.length);
        std::array<std::uint8_t, 3> head{};
        if (part->readAt(0, head) != head.size() || !jpeg::codec.recognises(head))
            continue;
        Result<DecoderPointer> preview = jpeg::codec.open(part);
        if (preview && isLargeEnough(sidesOf(**preview), sensor)
            && (best == nullptr || pixelsOf(**preview) > pixelsOf(*best)))
            best = *std::move(preview);
    }
    return best;
}

/// Whether `preview` lies across the sensor although the orientation turns the sensor's picture: the camera
/// has turned it already.
bool isUprightAlready(Sides preview, Sides sensor, int orientation) {
    const bool stands = preview.height > preview.width, sensorStands = sensor.height > sensor.width;
    return stands != sensorStands && uprightTurnFor(orientation).exchangesSides();
}

DecoderPointer shown(DecoderPointer preview, const Header& header, Sides sensor) {
    Bytes exif = header.exif;
    if (exif.empty())
        if (Result<Bytes> own = preview->exif())
            exif = *std::move(own);
    const ExifFacts facts = readExifFacts(exif);
    const int orientation = header.orientation.value_or(facts.orientation);
    FrameDescription frame = preview->frames().front();
    if (!frame.profile && facts.isAdobeRGB && frame.format.model == ColorModel::rgb)
        frame.profile = ColorProfile::adobeRGB();
    const bool isDone = isUprightAlready(sidesOf(*preview), sensor, orientation);
    return std::make_unique<PreviewDecoder>(std::move(preview), std::move(frame), isDone ? 1 : orientation,
                                            std::move(exif));
}

std::string_view startOf(ByteView head) { return {reinterpret_cast<const char*>(head.data()), head.size()}; }

bool isRAF(std::string_view start) { return start.starts_with("FUJIFILMCCD-RAW"); }

bool isCR3(std::string_view start) { return start.size() >= 12 && start.substr(4).starts_with("ftypcrx "); }

/// TIFF with another number after the byte order.
bool hasOwnDirectories(std::string_view start) {
    using namespace std::string_view_literals;
    constexpr std::string_view signs[] = {"IIRO"sv, "IIRS"sv, "MMOR"sv, "IIU\0"sv};
    return std::ranges::any_of(signs, [start](std::string_view sign) { return start.starts_with(sign); });
}

/// Formats that LibRaw alone reads.
bool isOther(std::string_view start) {
    using namespace std::string_view_literals;
    constexpr std::string_view signs[] = {"\0MRM"sv, "FOVb"sv, "II\x1a\0\0\0HEAPCCDR"sv};
    return std::ranges::any_of(signs, [start](std::string_view sign) { return start.starts_with(sign); });
}

bool recognises(ByteView head) {
    const std::string_view start = startOf(head);
    return isRAF(start) || isCR3(start) || hasOwnDirectories(start) || isOther(start);
}

Header readHeader(const std::shared_ptr<const ByteReader>& reader) {
    std::array<std::uint8_t, 16> buffer{};
    const ByteView head = ByteView(buffer).first(reader->readAt(0, buffer));
    const std::string_view start = startOf(head);
    if (isRAF(start))
        return readRAF(*reader);
    if (isCR3(start))
        return readCR3(*reader);
    if (hasOwnDirectories(start) || tiff::Structure::recognises(head))
        return readDirectories(reader);
    return {};
}

/// The preview that only LibRaw finds, or its development.
Result<DecoderPointer> openWithLibrary(const Functions& library,
                                       const std::shared_ptr<const ByteReader>& reader, Header header) {
    const Negative negative = TRY(readNegative(library, reader));
    if (!header.orientation)
        header.orientation = negative.orientation;
    if (DecoderPointer preview = largestPreview(reader, header, negative.sensor))
        return shown(std::move(preview), header, negative.sensor);
    Bytes stored = TRY(previewOf(library, reader, negative.sensor));
    const std::uint64_t storedBytes = stored.size();
    const auto storedReader = readerOfBytes(std::move(stored));
    header.previews = {{0, storedBytes}};
    if (DecoderPointer preview = largestPreview(storedReader, header, negative.sensor))
        return shown(std::move(preview), header, negative.sensor);
    const int orientation = *header.orientation;
    return DecoderPointer(
        std::make_unique<DevelopingDecoder>(library, reader, negative, orientation, std::move(header.exif)));
}

Result<DecoderPointer> open(std::shared_ptr<const ByteReader> reader) {
    Header header = readHeader(reader);
    if (header.sensor) {
        if (DecoderPointer preview = largestPreview(reader, header, *header.sensor))
            return shown(std::move(preview), header, *header.sensor);
        if (Result<DecoderPointer> page = tiff::openDevelopedPages(reader))
            return shown(*std::move(page), header, *header.sensor);
    }
    const Result<Functions>& library = installedFunctions();
    if (!library)
        return library.failure();
    return openWithLibrary(*library, reader, std::move(header));
}

void openLibraries() {
    (void)tiff::tiffFunctions();
    (void)installedFunctions();
}

} // namespace

const ImageCodec codec{"camera raw", recognises, open, openLibraries};

} // namespace kestrine::raw
