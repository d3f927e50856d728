#include "tests/platform/imageio/png/PNGFile.h"

namespace kestrine::testing {

namespace {

void setBits(png_bytep row, std::size_t index, int bits, unsigned value) {
    for (int b = 0; b < bits; ++b) {
        const std::size_t position = index * static_cast<std::size_t>(bits) + static_cast<std::size_t>(b);
        if (value >> (bits - 1 - b) & 1)
            row[position / 8] = static_cast<png_byte>(row[position / 8] | 0x80 >> position % 8);
    }
}

} // namespace

Bytes PNGFile::make() const {
    Bytes file;
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png_create_info_struct(png);
    png_set_write_fn(
        png, &file,
        [](png_structp p, png_bytep bytes, png_size_t count) {
            auto& out = *static_cast<Bytes*>(png_get_io_ptr(p));
            out.insert(out.end(), bytes, bytes + count);
        },
        nullptr);
    png_set_IHDR(png, info, width, height, bitDepth, colorType,
                 interlaced ? PNG_INTERLACE_ADAM7 : PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_BASE,
                 PNG_FILTER_TYPE_BASE);
    before(png, info);
    png_write_info(png, info);
    const int channels = png_get_channels(png, info), passes = png_set_interlace_handling(png);
    for (int pass = 0; pass < passes; ++pass)
        for (std::uint32_t y = 0; y < height; ++y) {
            Bytes row(png_get_rowbytes(png, info));
            for (std::uint32_t x = 0; x < width; ++x)
                for (int c = 0; c < channels; ++c)
                    setBits(row.data(), x * static_cast<std::size_t>(channels) + static_cast<std::size_t>(c),
                            bitDepth, sample(x, y, c));
            png_write_row(png, row.data());
        }
    after(png);
    png_write_end(png, nullptr);
    png_destroy_write_struct(&png, &info);
    return file;
}

PNGFile patternPNG(int colorType, int bits) {
    PNGFile file{.width = 19, .height = 11, .bitDepth = bits, .colorType = colorType};
    file.sample = [bits](auto x, auto y, int c) {
        const unsigned pattern = 37 * x + 91 * y + 53U * static_cast<unsigned>(c) + 1;
        return pattern * (bits == 16 ? 257U : 1U) % (1U << bits);
    };
    return file;
}

const png_color pngPalette[4] = {{10, 20, 30}, {40, 50, 60}, {70, 80, 90}, {250, 240, 230}};

PNGFile indexedPNG() {
    PNGFile file{.width = 5, .height = 3, .bitDepth = 2, .colorType = PNG_COLOR_TYPE_PALETTE};
    file.sample = [](auto x, auto y, int) { return (x + y) % 4; };
    file.before = [](auto png, auto info) { png_set_PLTE(png, info, pngPalette, 4); };
    return file;
}

} // namespace kestrine::testing
