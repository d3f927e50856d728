#include "tests/platform/imageio/gif/GIFFile.h"

#include <algorithm>
#include <memory>

namespace kestrine::testing {

namespace {

int appendTo(GifFileType* file, const GifByteType* bytes, int count) {
    auto& into = *static_cast<Bytes*>(file->UserData);
    into.insert(into.end(), bytes, bytes + count);
    return count;
}

int readFrom(GifFileType* file, GifByteType* into, int count) {
    auto& rest = *static_cast<ByteView*>(file->UserData);
    const std::size_t got = std::min(rest.size(), static_cast<std::size_t>(count));
    std::copy_n(rest.begin(), got, into);
    rest = rest.subspan(got);
    return static_cast<int>(got);
}

ColorMapObject* mapOf(const std::vector<GifColorType>& colors) {
    return colors.empty() ? nullptr : GifMakeMapObject(static_cast<int>(colors.size()), colors.data());
}

void putRows(GifFileType* gif, const GIFFile& file) {
    const auto putRow = [&](int y) {
        std::vector<GifPixelType> row(static_cast<std::size_t>(file.width));
        for (int x = 0; x < file.width; ++x)
            row[static_cast<std::size_t>(x)] = static_cast<GifPixelType>(file.index(x, y));
        EGifPutLine(gif, row.data(), file.width);
    };
    if (!file.interlaced)
        for (int y = 0; y < file.height; ++y)
            putRow(y);
    else
        for (const auto& [first, step] : {std::pair{0, 8}, {4, 8}, {2, 4}, {1, 2}})
            for (int y = first; y < file.height; y += step)
                putRow(y);
}

} // namespace

Bytes GIFFile::make() const {
    Bytes bytes;
    int error = 0;
    GifFileType* gif = EGifOpen(&bytes, appendTo, &error);
    EGifSetGifVersion(gif, true);
    ColorMapObject* screenMap = mapOf(screenColors);
    ColorMapObject* pictureMap = mapOf(pictureColors);
    EGifPutScreenDesc(gif, screenWidth, screenHeight, 8, 0, screenMap);
    before(gif);
    if (transparent)
        addTransparency(gif, *transparent);
    EGifPutImageDesc(gif, left, top, width, height, interlaced, pictureMap);
    putRows(gif, *this);
    after(gif);
    EGifCloseFile(gif, &error);
    GifFreeMapObject(screenMap);
    GifFreeMapObject(pictureMap);
    return bytes;
}

void addTransparency(GifFileType* file, int index) {
    GraphicsControlBlock control{};
    control.TransparentColor = index;
    GifByteType block[4];
    EGifGCBToExtension(&control, block);
    EGifPutExtension(file, GRAPHICS_EXT_FUNC_CODE, sizeof block, block);
}

StoredGIF readStoredGIF(const Bytes& file) {
    ByteView rest(file);
    int error = 0;
    GifFileType* gif = DGifOpen(&rest, readFrom, &error);
    StoredGIF stored;
    if (gif && DGifSlurp(gif) == GIF_OK && gif->ImageCount > 0) {
        stored.version = std::string(file.begin(), file.begin() + 6);
        stored.width = gif->SWidth;
        stored.height = gif->SHeight;
        stored.pictures = gif->ImageCount;
        stored.colors.assign(gif->SColorMap->Colors, gif->SColorMap->Colors + gif->SColorMap->ColorCount);
        const GifByteType* raster = gif->SavedImages[0].RasterBits;
        stored.indices.assign(raster, raster + std::size_t{1} * gif->SWidth * gif->SHeight);
        GraphicsControlBlock control{};
        if (DGifSavedExtensionToGCB(gif, 0, &control) == GIF_OK && control.TransparentColor >= 0)
            stored.transparent = control.TransparentColor;
    }
    if (gif)
        DGifCloseFile(gif, &error);
    return stored;
}

} // namespace kestrine::testing
