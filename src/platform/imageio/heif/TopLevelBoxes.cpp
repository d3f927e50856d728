#include "platform/imageio/heif/TopLevelBoxes.h"

namespace kestrine::heif {

namespace {

constexpr std::uint64_t maxLoadedBytes = std::uint64_t{64} << 20;
constexpr int maxTopLevelBoxes = 4096;

Result<LoadedBox> load(const ByteReader& reader, const FileRange& content) {
    if (content.length > maxLoadedBytes)
        return Failure{Reason::tooLarge, "the HEIF or AVIF file has too large a header"};
    Bytes bytes = TRY(readRanges(reader, {content}));
    return LoadedBox{std::move(bytes), content.offset};
}

} // namespace

Failure damagedFile(const std::string& what) {
    return {Reason::malformed, "the HEIF or AVIF file is damaged: " + what};
}

Result<TopLevelBoxes> readTopLevelBoxes(const ByteReader& reader) {
    TopLevelBoxes boxes;
    std::uint64_t offset = 0;
    for (int i = 0; i < maxTopLevelBoxes && offset < reader.size(); ++i) {
        const std::optional<BoxPlace> box = boxAt(reader, offset);
        if (!box)
            break;
        std::optional<LoadedBox>* const wanted = box->type == fourCC("meta")   ? &boxes.meta
                                                 : box->type == fourCC("moov") ? &boxes.moov
                                                                               : nullptr;
        if (wanted != nullptr && !*wanted)
            *wanted = TRY(load(reader, box->content));
        if (box->content.length > reader.size() - box->content.offset)
            break;
        offset = box->content.offset + box->content.length;
    }
    return boxes;
}

Result<Bytes> readRanges(const ByteReader& reader, const std::vector<FileRange>& ranges) {
    std::uint64_t length = 0;
    for (const FileRange& range : ranges) {
        if (range.offset > reader.size() || range.length > reader.size() - range.offset)
            return Failure{Reason::truncated, "the HEIF or AVIF file ends too early"};
        length += range.length;
    }
    Bytes bytes(static_cast<std::size_t>(length));
    std::size_t position = 0;
    for (const FileRange& range : ranges) {
        const std::span<std::uint8_t> part =
            std::span(bytes).subspan(position, static_cast<std::size_t>(range.length));
        if (reader.readAt(range.offset, part) != part.size())
            return Failure{Reason::truncated, "the HEIF or AVIF file ends too early"};
        position += part.size();
    }
    return bytes;
}

} // namespace kestrine::heif
