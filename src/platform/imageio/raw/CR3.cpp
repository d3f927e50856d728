#include "platform/imageio/Box.h"
#include "platform/imageio/exif/ExifTags.h"
#include "platform/imageio/heif/TopLevelBoxes.h"
#include "platform/imageio/raw/Header.h"
#include "platform/imageio/tiff/Exif.h"

#include <algorithm>

namespace kestrine::raw {

namespace {

constexpr std::size_t maxTracks = 16;

std::vector<Box> boxesOf(ByteView content) {
    Result<std::vector<Box>> boxes = boxesIn(content);
    return boxes ? *std::move(boxes) : std::vector<Box>();
}

/// The content of a box inside boxes, each in the one before; empty if there is none.
ByteView contentAt(ByteView content, std::initializer_list<FourCC> path) {
    for (const FourCC type : path)
        content = contentOf(boxesOf(content), type).value_or(ByteView());
    return content;
}

/// A track has one sample: a preview or the data of the sensor.
struct Track {
    FileRange sample;
    Sides sides{};
};

Track trackIn(ByteView content) {
    const std::vector<Box> table =
        boxesOf(contentAt(content, {fourCC("mdia"), fourCC("minf"), fourCC("stbl")}));
    const auto cursorAt = [&table](FourCC type) {
        Cursor cursor(contentOf(table, type).value_or(ByteView()));
        cursor.skip(4); // version and flags
        return cursor;
    };
    Track track;
    Cursor description = cursorAt(fourCC("stsd"));
    description.skip(4 + 8 + 24); // count, header of the entry, and what all entries for pictures begin with
    track.sides.width = description.u16();
    track.sides.height = description.u16();
    Cursor sizes = cursorAt(fourCC("stsz"));
    const std::uint32_t common = sizes.u32();
    sizes.skip(4); // count
    track.sample.length = common != 0 ? common : sizes.u32();
    Cursor offsets = cursorAt(fourCC("co64"));
    offsets.skip(4); // count
    track.sample.offset = offsets.number(8);
    return track;
}

void addTracks(Header& header, const std::vector<Box>& movie) {
    std::size_t tracks = 0;
    for (const Box& box : movie) {
        if (box.type != fourCC("trak") || ++tracks > maxTracks)
            continue;
        const Track track = trackIn(box.content);
        header.previews.push_back(track.sample);
        const Sides sensor = header.sensor.value_or(Sides{});
        if (std::uint64_t{track.sides.width} * track.sides.height
            > std::uint64_t{sensor.width} * sensor.height)
            header.sensor = track.sides;
    }
}

/// The directories of EXIF are files of their own there.
void addExif(Header& header, ByteView metadata) {
    const std::vector<Box> boxes = boxesOf(metadata);
    if (!contentOf(boxes, fourCC("CMT1")))
        return;
    const auto structureOf = [&boxes](FourCC type) {
        return tiff::Structure(readerOfBytes(copied(contentOf(boxes, type).value_or(ByteView()))));
    };
    const tiff::Structure main = structureOf(fourCC("CMT1")), exif = structureOf(fourCC("CMT2"));
    const auto firstOf = [](const tiff::Structure& file) {
        const Result<std::vector<std::uint64_t>> pages = file.pages();
        return tiff::DirectoryPlace{file,
                                    pages ? file.directoryAt(pages->front()) : tiff::Structure::Directory()};
    };
    const tiff::DirectoryPlace mainPage = firstOf(main);
    header.exif = tiff::exifOfParts(mainPage, firstOf(exif));
    const std::vector<std::uint64_t> orientation = main.numbers(mainPage.entries, exiftag::orientation, 1);
    if (orientation.size() == 1 && orientation.front() >= 1 && orientation.front() <= 8)
        header.orientation = static_cast<int>(orientation.front());
}

} // namespace

Header readCR3(const ByteReader& reader) {
    Header header;
    const Result<heif::TopLevelBoxes> boxes = heif::readTopLevelBoxes(reader);
    if (!boxes || !boxes->moov)
        return header;
    const std::vector<Box> movie = boxesOf(boxes->moov->content);
    addTracks(header, movie);
    for (const Box& box : movie)
        if (box.type == fourCC("uuid"))
            addExif(header, box.content);
    return header;
}

} // namespace kestrine::raw
