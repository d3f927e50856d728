// GIFFile: makes GIF files of every kind with giflib, and reads the content of a file with giflib.
#pragma once

#include "platform/host/Bytes.h"

#include <functional>
#include <gif_lib.h>
#include <optional>
#include <string>

namespace kestrine::testing {

struct GIFFile {
    int screenWidth = 4, screenHeight = 3;
    int left = 0, top = 0, width = 4, height = 3;
    bool interlaced = false;
    std::vector<GifColorType> screenColors = {{10, 20, 30}, {40, 50, 60}, {70, 80, 90}, {250, 240, 230}};
    std::vector<GifColorType> pictureColors = {};
    std::optional<int> transparent = {};
    /// The index at (x, y).
    std::function<int(int x, int y)> index = [](int x, int y) { return (x + y) % 4; };
    /// Add blocks before and after the picture.
    std::function<void(GifFileType*)> before = [](auto) {}, after = [](auto) {};

    Bytes make() const;
};

/// Adds a graphic control extension with that transparent index.
void addTransparency(GifFileType* file, int index);

struct StoredGIF {
    std::string version;
    int width = 0, height = 0, pictures = 0;
    std::vector<GifColorType> colors;
    std::optional<int> transparent;
    Bytes indices; ///< of the first picture

    GifColorType colorAt(std::size_t pixel) const { return colors[indices[pixel]]; }
    bool isShown(std::size_t pixel) const { return indices[pixel] != transparent; }
};

/// A file as giflib reads it; without pictures if it fails.
StoredGIF readStoredGIF(const Bytes& file);

} // namespace kestrine::testing
