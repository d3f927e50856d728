#include "platform/imageio/png/fast/StoredPixels.h"

#include "platform/imageio/png/fast/BigEndianWords.h"

#include <cstring>

namespace kestrine::png {

namespace {

template <std::size_t channels>
void lookUp(const std::array<std::array<std::uint8_t, 4>, 256>& colors, const std::uint8_t* indices,
            std::span<std::uint8_t> row) {
    for (std::size_t i = 0; i < row.size(); i += channels)
        std::memcpy(row.data() + i, colors[*indices++].data(), channels);
}

} // namespace

StoredPixels::StoredPixels(const LibraryReader& file) : format_(file.format()), isIndexed_(file.isIndexed()) {
    if (isIndexed_)
        readColors(file);
}

void StoredPixels::readColors(const LibraryReader& file) {
    png_colorp table = nullptr;
    int count = 0;
    // Indices outside the table are black, as in libpng.
    if (libpng().getPLTE(file.png(), file.info(), &table, &count))
        for (std::size_t i = 0; i < static_cast<std::size_t>(count); ++i)
            colors_[i] = {table[i].red, table[i].green, table[i].blue, 0};
    for (std::size_t i = 0; i < colors_.size(); ++i)
        colors_[i][3] = file.alphaOfIndices()[i];
}

void StoredPixels::convert(const std::uint8_t* stored, std::span<std::uint8_t> row) const {
    if (isIndexed_)
        return format_.hasAlpha ? lookUp<4>(colors_, stored, row) : lookUp<3>(colors_, stored, row);
    if (format_.depth == SampleDepth::bits16)
        return copyBigEndianWords(ByteView(stored, row.size()), row.data());
    std::memcpy(row.data(), stored, row.size());
}

} // namespace kestrine::png
