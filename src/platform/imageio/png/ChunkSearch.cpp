#include "platform/imageio/png/ChunkSearch.h"

#include "platform/host/BigEndian.h"

#include <algorithm>

namespace kestrine::png {

namespace {

constexpr std::uint64_t maximumContentBytes = 1 << 20;
constexpr int maximumChunks = 1 << 20;

bool isReadable(const Chunk& chunk, const ByteReader& reader) {
    return chunk.contentBytes <= maximumContentBytes
           && chunk.contentOffset() + chunk.contentBytes <= reader.size();
}

} // namespace

void walkChunks(const ByteReader& reader, std::span<const std::string_view> wanted, std::uint64_t position,
                SearchEnd end, std::span<std::optional<Chunk>> found) {
    std::array<std::uint8_t, 8> head;
    std::size_t missing = wanted.size();
    for (int i = 0; i < maximumChunks && missing > 0 && reader.readAt(position, head) == head.size(); ++i) {
        const Chunk chunk{position, bigEndian(std::span(head).first(4))};
        const std::string_view type(reinterpret_cast<const char*>(head.data()) + 4, 4);
        const auto place = static_cast<std::size_t>(std::ranges::find(wanted, type) - wanted.begin());
        if (place < wanted.size() && !found[place] && isReadable(chunk, reader)) {
            found[place] = chunk;
            --missing;
        }
        if (type == "IEND" || (type == "IDAT" && end == SearchEnd::atPixels))
            break;
        position = chunk.end();
    }
}

Bytes contentOf(const ByteReader& reader, const std::optional<Chunk>& chunk) {
    Bytes content(chunk ? chunk->contentBytes : 0);
    return chunk && reader.readAt(chunk->contentOffset(), content) == content.size() ? content : Bytes{};
}

Bytes contentOfSize(std::uint64_t bytes, const ByteReader& reader, const std::optional<Chunk>& chunk) {
    return chunk && chunk->contentBytes == bytes ? contentOf(reader, chunk) : Bytes{};
}

} // namespace kestrine::png
