#include "tests/platform/imageio/tiff/TIFFRecipe.h"

#include <algorithm>
#include <cstring>

namespace kestrine::testing {

namespace {

struct Memory {
    Bytes bytes;
    std::size_t position = 0;
};

tmsize_t readMemory(thandle_t handle, void* into, tmsize_t count) {
    auto& memory = *static_cast<Memory*>(handle);
    const std::size_t got =
        std::min<std::size_t>(static_cast<std::size_t>(count),
                              memory.bytes.size() - std::min(memory.position, memory.bytes.size()));
    std::copy_n(memory.bytes.data() + memory.position, got, static_cast<std::uint8_t*>(into));
    memory.position += got;
    return static_cast<tmsize_t>(got);
}

tmsize_t writeMemory(thandle_t handle, void* from, tmsize_t count) {
    auto& memory = *static_cast<Memory*>(handle);
    const auto size = static_cast<std::size_t>(count);
    memory.bytes.resize(std::max(memory.bytes.size(), memory.position + size));
    std::memcpy(memory.bytes.data() + memory.position, from, size);
    memory.position += size;
    return count;
}

toff_t seekMemory(thandle_t handle, toff_t offset, int whence) {
    auto& memory = *static_cast<Memory*>(handle);
    const std::size_t base = whence == SEEK_CUR   ? memory.position
                             : whence == SEEK_END ? memory.bytes.size()
                                                  : 0;
    return memory.position = base + offset;
}

toff_t sizeOfMemory(thandle_t handle) { return static_cast<Memory*>(handle)->bytes.size(); }

void setSample(std::uint8_t* row, std::size_t index, unsigned bits, std::uint32_t value) {
    if (bits == 16) {
        const auto wide = static_cast<std::uint16_t>(value);
        std::memcpy(row + 2 * index, &wide, 2);
    } else if (bits == 32) {
        std::memcpy(row + 4 * index, &value, 4);
    } else {
        for (unsigned b = 0; b < bits; ++b) {
            const std::size_t position = index * bits + b;
            if (value >> (bits - 1 - b) & 1)
                row[position / 8] = static_cast<std::uint8_t>(row[position / 8] | 0x80 >> position % 8);
        }
    }
}

/// The samples of `width` pixels starting at (x, y), of one plane or, if `plane` < 0, of all planes.
void fillRow(std::uint8_t* row, const TIFFRecipe& page, std::uint32_t x, std::uint32_t y, std::uint32_t width,
             int plane) {
    std::size_t index = 0;
    for (std::uint32_t i = 0; i < width; ++i)
        for (unsigned s = 0; s < page.samples; ++s)
            if (plane < 0 || s == static_cast<unsigned>(plane))
                setSample(row, index++, page.bits,
                          page.stored(std::min(x + i, page.width - 1), std::min(y, page.height - 1), s));
}

void writeStrips(TIFF* tiff, const TIFFRecipe& page, int plane) {
    for (std::uint32_t y = 0; y < page.height; ++y) {
        Bytes row(static_cast<std::size_t>(TIFFScanlineSize(tiff)));
        fillRow(row.data(), page, 0, y, page.width, plane);
        TIFFWriteScanline(tiff, row.data(), y, static_cast<std::uint16_t>(std::max(plane, 0)));
    }
}

void writeTiles(TIFF* tiff, const TIFFRecipe& page, int plane) {
    for (std::uint32_t y = 0; y < page.height; y += page.tileHeight)
        for (std::uint32_t x = 0; x < page.width; x += page.tileWidth) {
            Bytes tile(static_cast<std::size_t>(TIFFTileSize(tiff)));
            for (std::uint32_t row = 0; row < page.tileHeight; ++row)
                fillRow(tile.data() + row * static_cast<std::size_t>(TIFFTileRowSize(tiff)), page, x, y + row,
                        page.tileWidth, plane);
            TIFFWriteTile(tiff, tile.data(), x, y, 0, static_cast<std::uint16_t>(std::max(plane, 0)));
        }
}

void writePage(TIFF* tiff, const TIFFRecipe& page) {
    TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, page.width);
    TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, page.height);
    TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, page.bits);
    TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, page.samples);
    TIFFSetField(tiff, TIFFTAG_COMPRESSION, page.compression);
    TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, page.photometric);
    TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, page.planar);
    if (!page.extraSamples.empty())
        TIFFSetField(tiff, TIFFTAG_EXTRASAMPLES, static_cast<int>(page.extraSamples.size()),
                     page.extraSamples.data());
    if (page.tileWidth) {
        TIFFSetField(tiff, TIFFTAG_TILEWIDTH, page.tileWidth);
        TIFFSetField(tiff, TIFFTAG_TILELENGTH, page.tileHeight);
    } else {
        TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, page.rowsPerStrip);
    }
    page.tags(tiff);
    const std::vector<std::uint64_t> subPages(page.subPages.size());
    if (!subPages.empty())
        TIFFSetField(tiff, TIFFTAG_SUBIFD, static_cast<int>(subPages.size()), subPages.data());
    const bool isPlanar = page.planar == PLANARCONFIG_SEPARATE;
    if (!page.rawStrip.empty()) {
        Bytes strip = page.rawStrip;
        TIFFWriteRawStrip(tiff, 0, strip.data(), static_cast<tmsize_t>(strip.size()));
    } else
        for (int plane = isPlanar ? 0 : -1; plane < (isPlanar ? page.samples : 0); ++plane)
            (page.tileWidth ? writeTiles : writeStrips)(tiff, page, plane);
    TIFFWriteDirectory(tiff);
    for (const TIFFRecipe& subPage : page.subPages)
        writePage(tiff, subPage);
}

} // namespace

Bytes makeTIFF(const std::vector<TIFFRecipe>& pages, const char* mode) {
    Memory memory;
    TIFFSetWarningHandler(nullptr);
    TIFF* tiff = TIFFClientOpen(
        "test", mode, &memory, readMemory, writeMemory, seekMemory, [](thandle_t) { return 0; }, sizeOfMemory,
        nullptr, nullptr);
    for (const TIFFRecipe& page : pages)
        writePage(tiff, page);
    TIFFClose(tiff);
    return std::move(memory.bytes);
}

Bytes makeTIFF(const TIFFRecipe& page, const char* mode) { return makeTIFF(std::vector{page}, mode); }

} // namespace kestrine::testing
