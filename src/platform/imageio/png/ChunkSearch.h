// Searches chunks of PNG files.
#pragma once

#include "platform/host/Bytes.h"
#include "platform/host/files/ByteReader.h"

#include <array>
#include <optional>
#include <span>
#include <string_view>

namespace kestrine::png {

constexpr std::uint64_t signatureBytes = 8;

/// A chunk consists of its length and type (8 bytes together), its content and a checksum (4 bytes).
struct Chunk {
    std::uint64_t offset; ///< of the whole chunk in the file
    std::uint64_t contentBytes;

    std::uint64_t contentOffset() const { return offset + 8; }
    std::uint64_t end() const { return offset + 12 + contentBytes; }
};

enum class SearchEnd : std::uint8_t { atPixels, atLastChunk };

/// Finds the first chunk of each type in `wanted` (four letters) that has at most 1 MiB and is not cut off,
/// in one walk from the chunk at `position` on. Checksums are not compared.
template <std::size_t count>
std::array<std::optional<Chunk>, count> findChunks(const ByteReader& reader,
                                                   const std::string_view (&wanted)[count],
                                                   std::uint64_t position, SearchEnd end);

/// The content of a chunk; empty if there is no chunk or its content cannot be read.
Bytes contentOf(const ByteReader& reader, const std::optional<Chunk>& chunk);

/// The same, and empty if the chunk has any other size.
Bytes contentOfSize(std::uint64_t bytes, const ByteReader& reader, const std::optional<Chunk>& chunk);

/// The walk of findChunks(): what it finds becomes elements of `found`, in the order of `wanted`.
void walkChunks(const ByteReader& reader, std::span<const std::string_view> wanted, std::uint64_t position,
                SearchEnd end, std::span<std::optional<Chunk>> found);

template <std::size_t count>
std::array<std::optional<Chunk>, count> findChunks(const ByteReader& reader,
                                                   const std::string_view (&wanted)[count],
                                                   std::uint64_t position, SearchEnd end) {
    std::array<std::optional<Chunk>, count> found;
    walkChunks(reader, wanted, position, end, found);
    return found;
}

} // namespace kestrine::png
