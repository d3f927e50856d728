#include "platform/host/BigEndian.h"
#include "platform/imageio/exif/ExifTags.h"
#include "platform/imageio/raw/Header.h"
#include "platform/imageio/tiff/Exif.h"
#include "platform/imageio/tiff/PageList.h"
#include "platform/imageio/tiff/Tags.h"

#include <algorithm>
#include <array>

namespace kestrine::raw {

namespace {

using tiff::Structure;

constexpr std::size_t maxPreviews = 16, maxSubDirectories = 32;

enum PanasonicTag : std::uint16_t {
    panasonicTop = 4, // where the picture is on the sensor
    panasonicLeft = 5,
    panasonicBottom = 6,
    panasonicRight = 7,
    panasonicPreview = 46,
};

/// The first value of a tag; 0 if there is none.
std::uint64_t numberOf(const Structure& file, const Structure::Directory& directory, std::uint16_t tag) {
    constexpr std::size_t enough = 16;
    const std::vector<std::uint64_t> numbers = file.numbers(directory, tag, enough);
    return numbers.empty() ? 0 : numbers.front();
}

/// The only strip of a directory, or the JPEG file that it points to.
std::optional<FileRange> streamOf(const Structure& file, const Structure::Directory& directory) {
    const std::uint64_t pointed = numberOf(file, directory, tiff::tag::jpegOffset);
    if (pointed != 0)
        return FileRange{pointed, numberOf(file, directory, tiff::tag::jpegLength)};
    const std::vector<std::uint64_t> strips = file.numbers(directory, tiff::tag::stripOffsets, 1);
    if (strips.size() == 1)
        return FileRange{strips.front(), numberOf(file, directory, tiff::tag::stripByteCounts)};
    return std::nullopt;
}

/// The size in the header of a lossless JPEG stream; the components of a mosaic lie side by side.
std::optional<Sides> sidesOfLosslessJPEG(const ByteReader& reader, const FileRange& place) {
    constexpr std::uint32_t startOfFrame = 0xffc3;
    constexpr int maxSegments = 16;
    std::array<std::uint8_t, 10> segment{};
    std::uint64_t offset = place.offset + 2;
    for (int i = 0; i < maxSegments && reader.readAt(offset, segment) == segment.size(); ++i) {
        const ByteView bytes(segment);
        const auto height = static_cast<std::uint32_t>(bigEndian(bytes.subspan(5, 2)));
        const auto width = static_cast<std::uint32_t>(bigEndian(bytes.subspan(7, 2)));
        const std::uint32_t components = bytes[9];
        if (bigEndian(bytes.first(2)) == startOfFrame)
            return Sides{components == 2 || components == 4 ? width * components : width, height};
        offset += 2 + bigEndian(bytes.subspan(2, 2));
    }
    return std::nullopt;
}

class Reading {
public:
    explicit Reading(const std::shared_ptr<const ByteReader>& reader) : reader_(reader), file_(reader) {}

    Header header() {
        const Result<std::vector<std::uint64_t>> pages = file_.pages();
        if (!pages)
            return {};
        const Structure::Directory main = file_.directoryAt(pages->front());
        for (const std::uint64_t page : *pages) {
            const Structure::Directory directory = file_.directoryAt(page);
            addDirectory(directory);
            for (const std::uint64_t sub :
                 file_.numbers(directory, tiff::tag::subDirectories, maxSubDirectories))
                addDirectory(file_.directoryAt(sub));
        }
        addPanasonicData(main);
        if (const std::uint64_t stored = numberOf(file_, main, exiftag::orientation);
            stored >= 1 && stored <= 8)
            header_.orientation = static_cast<int>(stored);
        header_.exif = tiff::exifOfTIFF(file_, pages->front());
        return std::move(header_);
    }

private:
    void addDirectory(const Structure::Directory& directory) {
        const std::optional<FileRange> stream = streamOf(file_, directory);
        if (tiff::holdsSensorData(file_, directory))
            addSensor(sidesOf(directory, stream));
        else if (stream)
            addPreview(*stream);
    }

    void addPanasonicData(const Structure::Directory& main) {
        const auto preview = std::ranges::find(main, panasonicPreview, &Structure::Entry::tag);
        if (preview == main.end())
            return;
        addPreview({preview->valuesAt, preview->count});
        const auto numberAt = [&](std::uint16_t tag) { return numberOf(file_, main, tag); };
        addSensor(sidesOf(numberAt(panasonicRight) - numberAt(panasonicLeft),
                          numberAt(panasonicBottom) - numberAt(panasonicTop)));
    }

    std::optional<Sides> sidesOf(const Structure::Directory& directory,
                                 const std::optional<FileRange>& stream) const {
        const std::optional<Sides> stored = sidesOf(numberOf(file_, directory, tiff::tag::imageWidth),
                                                    numberOf(file_, directory, tiff::tag::imageLength));
        return stored || !stream ? stored : sidesOfLosslessJPEG(*reader_, *stream);
    }

    static std::optional<Sides> sidesOf(std::uint64_t width, std::uint64_t height) {
        if (width == 0 || height == 0 || width > maximumSide || height > maximumSide)
            return std::nullopt;
        return Sides{static_cast<std::uint32_t>(width), static_cast<std::uint32_t>(height)};
    }

    void addPreview(const FileRange& place) {
        if (header_.previews.size() < maxPreviews && place.offset != 0 && place.length != 0)
            header_.previews.push_back(place);
    }

    void addSensor(const std::optional<Sides>& sides) {
        const auto pixels = [](const Sides& one) { return std::uint64_t{one.width} * one.height; };
        if (sides && (!header_.sensor || pixels(*sides) > pixels(*header_.sensor)))
            header_.sensor = sides;
    }

    const std::shared_ptr<const ByteReader> reader_;
    const Structure file_;
    Header header_;
};

} // namespace

Header readDirectories(const std::shared_ptr<const ByteReader>& reader) { return Reading(reader).header(); }

bool isLargeEnough(Sides preview, Sides sensor) {
    const auto [shorter, longer] = std::minmax(preview.width, preview.height);
    const auto [sensorShorter, sensorLonger] = std::minmax(sensor.width, sensor.height);
    return std::uint64_t{shorter} * 10 >= std::uint64_t{sensorShorter} * 9
           && std::uint64_t{longer} * 10 >= std::uint64_t{sensorLonger} * 9;
}

} // namespace kestrine::raw
