#include "tests/platform/imageio/png/PNGRecipe.h"

#include <algorithm>
#include <array>
#include <zlib.h>

namespace kestrine::testing {

namespace {

void addNumber(Bytes& to, std::uint32_t number) {
    for (int shift = 24; shift >= 0; shift -= 8)
        to.push_back(static_cast<std::uint8_t>(number >> shift));
}

void insertChunk(Bytes& file, std::size_t position, std::string_view type, ByteView content) {
    Bytes chunk;
    addChunk(chunk, type, content);
    file.insert(file.begin() + static_cast<std::ptrdiff_t>(position), chunk.begin(), chunk.end());
}

} // namespace

Bytes zlibStream(ByteView bytes, int level, int windowBits) {
    z_stream stream{};
    deflateInit2(&stream, level, Z_DEFLATED, windowBits, 8, Z_DEFAULT_STRATEGY);
    Bytes compressed(deflateBound(&stream, bytes.size()) + 64);
    stream.next_in = const_cast<Bytef*>(bytes.data());
    stream.avail_in = static_cast<uInt>(bytes.size());
    stream.next_out = compressed.data();
    stream.avail_out = static_cast<uInt>(compressed.size());
    deflate(&stream, Z_FINISH);
    compressed.resize(stream.total_out);
    deflateEnd(&stream);
    return compressed;
}

void addChunk(Bytes& file, std::string_view type, ByteView content, std::uint32_t error) {
    addNumber(file, static_cast<std::uint32_t>(content.size()));
    const std::size_t begin = file.size();
    file.insert(file.end(), type.begin(), type.end());
    file.insert(file.end(), content.begin(), content.end());
    addNumber(file, error
                        + static_cast<std::uint32_t>(
                            crc32(0, file.data() + begin, static_cast<uInt>(file.size() - begin))));
}

Bytes withChunk(Bytes file, std::string_view type, ByteView content) {
    insertChunk(file, afterHeader, type, content);
    return file;
}

Bytes withLateChunk(Bytes file, std::string_view type, ByteView content) {
    constexpr std::size_t bytesOfEnd = 12;
    insertChunk(file, file.size() - bytesOfEnd, type, content);
    return file;
}

std::size_t PNGRecipe::bytesPerPixel() const {
    constexpr std::array<std::size_t, 7> channels = {1, 0, 3, 1, 2, 0, 4};
    return channels[colorType] * bitDepth / 8;
}

PNGRecipe& PNGRecipe::randomRows(std::mt19937& random, int filter, unsigned spread) {
    rows.clear();
    for (std::uint32_t y = 0; y < height; ++y) {
        rows.push_back(static_cast<std::uint8_t>(filter < 0 ? random() % 5 : static_cast<unsigned>(filter)));
        for (std::size_t i = 0; i < rowBytes(); ++i)
            rows.push_back(static_cast<std::uint8_t>(random() % spread));
    }
    return compress();
}

PNGRecipe& PNGRecipe::compress(int level, int windowBits) {
    stream = zlibStream(rows, level, windowBits);
    return *this;
}

Bytes PNGRecipe::make() const {
    Bytes file = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
    Bytes header;
    addNumber(header, width);
    addNumber(header, height);
    header.insert(header.end(), {bitDepth, colorType, 0, 0, 0});
    addChunk(file, "IHDR", header);
    file.insert(file.end(), before.begin(), before.end());
    for (std::size_t at = 0; at < stream.size(); at += chunkBytes)
        addChunk(file, "IDAT", ByteView(stream).subspan(at, std::min(chunkBytes, stream.size() - at)));
    file.insert(file.end(), after.begin(), after.end());
    addChunk(file, "IEND", {});
    return file;
}

} // namespace kestrine::testing
