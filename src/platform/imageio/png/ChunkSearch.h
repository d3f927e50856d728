// Searches chunks of PNG files.
#pragma once

#include "platform/host/Bytes.h"
#include "platform/host/files/ByteReader.h"

#include <optional>
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

/// The first chunk of type `wanted` (four letters) that has at most 1 MiB. `position` is the offset of the
/// chunk where the search begins. Checksums are not compared.
std::optional<Chunk> findChunk(const ByteReader& reader, std::string_view wanted, std::uint64_t position,
                               SearchEnd end);

/// The content of that chunk; empty if there is none.
Bytes chunkContent(const ByteReader& reader, std::string_view wanted, std::uint64_t position, SearchEnd end);

} // namespace kestrine::png
