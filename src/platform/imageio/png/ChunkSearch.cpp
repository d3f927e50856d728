#include "platform/imageio/png/ChunkSearch.h"

#include "platform/host/BigEndian.h"

#include <array>

namespace kestrine::png {

namespace {

constexpr std::uint64_t maximumContentBytes = 1 << 20;
constexpr int maximumChunks = 1 << 20;

} // namespace

std::optional<Chunk> findChunk(const ByteReader& reader, std::string_view wanted, std::uint64_t position,
                               SearchEnd end) {
    std::array<std::uint8_t, 8> head;
    for (int i = 0; i < maximumChunks && reader.readAt(position, head) == head.size(); ++i) {
        const Chunk chunk{position, bigEndian(std::span(head).first(4))};
        const std::string_view name(reinterpret_cast<const char*>(head.data()) + 4, 4);
        if (name == wanted && chunk.contentBytes <= maximumContentBytes
            && chunk.contentOffset() + chunk.contentBytes <= reader.size())
            return chunk;
        if (name == "IEND" || (name == "IDAT" && end == SearchEnd::atPixels))
            break;
        position = chunk.end();
    }
    return std::nullopt;
}

Bytes chunkContent(const ByteReader& reader, std::string_view wanted, std::uint64_t position, SearchEnd end) {
    const std::optional<Chunk> chunk = findChunk(reader, wanted, position, end);
    Bytes content(chunk ? chunk->contentBytes : 0);
    return chunk && reader.readAt(chunk->contentOffset(), content) == content.size() ? content : Bytes{};
}

} // namespace kestrine::png
