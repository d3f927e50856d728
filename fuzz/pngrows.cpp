// Puts the input as compressed pixels into a PNG file with correct checksums of the chunks. The fast decoder
// and libpng must give the same result.
#include "platform/coregraphics/PixelBuffer.h"
#include "platform/host/BigEndian.h"
#include "platform/imageio/png/LibraryRows.h"
#include "platform/imageio/png/fast/Chunk.h"
#include "platform/imageio/png/fast/FastRows.h"

#include <cstdlib>

using namespace kestrine;

namespace {

constexpr std::size_t recipeBytes = 4;

/// The first bytes choose the kind, the size, and the length of the chunks.
Bytes makeFile(ByteView data) {
    constexpr std::uint8_t colorTypes[] = {0, 2, 4, 6, 3};
    const std::uint8_t kind = data[0] % 9;
    Bytes file = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'}, header;
    appendBigEndian(header, data[1] + 1u, 4);
    appendBigEndian(header, data[2] + 1u, 4);
    header.insert(header.end(),
                  {static_cast<std::uint8_t>(kind < 8 && kind % 2 ? 16 : 8), colorTypes[kind / 2], 0, 0, 0});
    png::appendChunk("IHDR", {header}, file);
    if (kind == 8)
        png::appendChunk("PLTE", {data.first(3)}, file);
    const std::size_t chunkBytes = data[3] * 8u + 1;
    for (ByteView rest = data.subspan(recipeBytes); !rest.empty();) {
        const ByteView part = rest.first(std::min(chunkBytes, rest.size()));
        png::appendChunk("IDAT", {part}, file);
        rest = rest.subspan(part.size());
    }
    png::appendChunk("IEND", {}, file);
    return file;
}

Result<PixelBuffer> pixelsOf(RowSourcePointer rows) { return readAllRows(*rows); }

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size <= recipeBytes)
        return 0;
    const auto file = readerOfBytes(makeFile({data, size}));
    auto reader = std::make_unique<png::LibraryReader>(file);
    if (!reader->readHeader())
        return 0;
    RowSourcePointer fastRows = png::openFastRows(*reader, file, std::make_shared<DamageRecord>());
    if (!fastRows)
        std::abort(); // ISA-L is not installed, or a kind is not supported
    const Result<PixelBuffer> fast = pixelsOf(std::move(fastRows));
    const Result<PixelBuffer> expected =
        pixelsOf(std::make_unique<png::LibraryRows>(std::move(reader), std::make_shared<DamageRecord>()));
    if (fast.ok() != expected.ok() || (fast && fast->bytes != expected->bytes))
        std::abort();
    return 0;
}
