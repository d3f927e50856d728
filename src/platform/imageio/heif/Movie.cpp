#include "platform/imageio/heif/Movie.h"

#include <algorithm>

namespace kestrine::heif {

namespace {

struct Track {
    std::uint32_t id = 0;
    FourCC handler = 0;
    std::vector<Box> references;
    std::vector<Box> sampleTable;
};

/// The boxes in the first box of that type; none if it is missing.
Result<std::vector<Box>> childrenOf(const std::vector<Box>& boxes, FourCC type) {
    return boxesIn(contentOf(boxes, type).value_or(ByteView()));
}

Result<Track> trackIn(ByteView content) {
    const std::vector<Box> boxes = TRY(boxesIn(content));
    Track track;
    Cursor header(contentOf(boxes, fourCC("tkhd")).value_or(ByteView()));
    header.skip(readFullBoxHeader(header).version == 0 ? 8 : 16); // times
    track.id = header.u32();
    track.references = TRY(childrenOf(boxes, fourCC("tref")));
    const std::vector<Box> media = TRY(childrenOf(boxes, fourCC("mdia")));
    Cursor handler(contentOf(media, fourCC("hdlr")).value_or(ByteView()));
    handler.skip(8);
    track.handler = handler.u32();
    const std::vector<Box> information = TRY(childrenOf(media, fourCC("minf")));
    track.sampleTable = TRY(childrenOf(information, fourCC("stbl")));
    return track;
}

bool refersTo(const Track& track, FourCC type, std::uint32_t id) {
    Cursor cursor(contentOf(track.references, type).value_or(ByteView()));
    while (!cursor.rest().empty())
        if (cursor.u32() == id && cursor.isSound())
            return true;
    return false;
}

struct SampleSizes {
    std::uint64_t first = 0;
    std::uint32_t count = 0;
};

SampleSizes sampleSizes(const Track& track) {
    SampleSizes sizes;
    if (const std::optional<ByteView> content = contentOf(track.sampleTable, fourCC("stsz"))) {
        Cursor cursor(*content);
        cursor.skip(4);
        const std::uint32_t common = cursor.u32();
        sizes.count = cursor.u32();
        sizes.first = common != 0 ? common : cursor.u32();
    } else if (const std::optional<ByteView> compact = contentOf(track.sampleTable, fourCC("stz2"))) {
        Cursor cursor(*compact);
        cursor.skip(7);
        const unsigned bits = cursor.u8();
        sizes.count = cursor.u32();
        sizes.first = bits == 16 ? cursor.u16() : bits == 8 ? cursor.u8() : cursor.u8() >> 4;
    }
    return sizes;
}

std::uint64_t firstChunk(const Track& track) {
    const std::optional<ByteView> content = contentOf(track.sampleTable, fourCC("stco"));
    const std::optional<ByteView> large = contentOf(track.sampleTable, fourCC("co64"));
    Cursor cursor(content ? *content : large.value_or(ByteView()));
    cursor.skip(8);
    return cursor.number(content ? 4 : 8);
}

/// The properties in the first description of samples.
Result<PictureProperties> describedSamples(const Track& track) {
    Cursor table(contentOf(track.sampleTable, fourCC("stsd")).value_or(ByteView()));
    table.skip(8);
    const std::vector<Box> entries = TRY(boxesIn(table.rest()));
    if (entries.empty())
        return damagedFile("its sequence has no description");
    Cursor entry(entries.front().content);
    entry.skip(24);
    const std::uint32_t width = entry.u16();
    const Size size{width, entry.u16()};
    entry.skip(50);
    std::vector<ItemProperty> properties;
    const std::vector<Box> boxes = TRY(boxesIn(entry.rest()));
    for (const Box& box : boxes)
        properties.push_back({box, false});
    PictureProperties described = TRY(readProperties(properties));
    described.size = size;
    if (described.coding.kind == CodingSetup::Kind::none)
        return Failure{Reason::unsupported,
                       "sequences of the kind \"" + nameOf(entries.front().type) + "\" are not supported"};
    return described;
}

Result<PictureNode> firstFrameOf(const Track& track, std::uint64_t fileBytes) {
    PictureProperties properties = TRY(describedSamples(track));
    const FileRange data{firstChunk(track), sampleSizes(track).first};
    if (data.length == 0 || data.offset > fileBytes || data.length > fileBytes - data.offset)
        return Failure{Reason::truncated, "the HEIF or AVIF file ends too early"};
    return codedNode(std::move(properties), {data});
}

bool hasPictures(const Track& track) {
    return (track.handler == fourCC("pict") || track.handler == fourCC("vide"))
           && sampleSizes(track).count > 0;
}

/// Adds the alpha plane from the first track that has one for `main`.
Result<void> addAlpha(PictureNode& frame, const std::vector<Track>& tracks, const Track& main,
                      std::uint64_t fileBytes) {
    for (const Track& track : tracks) {
        if (track.handler != fourCC("auxv") || !refersTo(track, fourCC("auxl"), main.id))
            continue;
        Result<PictureNode> first = firstFrameOf(track, fileBytes);
        if (!first && first.failure().reason == Reason::unsupported)
            continue; // such as a track of depth maps
        PictureNode alpha = TRY(std::move(first));
        if (!alpha.properties.isAlpha)
            continue;
        TRY(attachAlpha(frame, std::make_shared<const PictureNode>(std::move(alpha)),
                        refersTo(main, fourCC("prem"), track.id)));
        return {};
    }
    return {};
}

} // namespace

Result<Movie> readMovie(const LoadedBox& moov, std::uint64_t fileBytes) {
    const std::vector<Box> boxes = TRY(boxesIn(moov.content));
    std::vector<Track> tracks;
    for (const Box& box : boxes)
        if (box.type == fourCC("trak"))
            tracks.push_back(TRY(trackIn(box.content)));
    const auto main = std::ranges::find_if(tracks, hasPictures);
    if (main == tracks.end())
        return damagedFile("it has no pictures");
    PictureNode frame = TRY(firstFrameOf(*main, fileBytes));
    TRY(addAlpha(frame, tracks, *main, fileBytes));
    return Movie{std::make_shared<const PictureNode>(std::move(frame)), sampleSizes(*main).count};
}

} // namespace kestrine::heif
