#include "platform/imageio/png/LibraryReader.h"
#include "tests/platform/imageio/png/PNGFile.h"

#include <gtest/gtest.h>

namespace kestrine::testing {

namespace {

/// Adds a chunk of each kind that does not concern the pixels.
void addDescriptions(png_structp png, png_infop info) {
    char key[] = "Title", text[] = "a text";
    for (const int compression : {PNG_TEXT_COMPRESSION_NONE, PNG_TEXT_COMPRESSION_zTXt,
                                  PNG_ITXT_COMPRESSION_NONE, PNG_ITXT_COMPRESSION_zTXt}) {
        png_text content{};
        content.compression = compression;
        content.key = key;
        content.text = text;
        content.text_length = sizeof text - 1;
        png_set_text(png, info, &content, 1);
    }
    png_sPLT_entry entry{};
    png_sPLT_t palette{key, 8, &entry, 1};
    png_set_sPLT(png, info, &palette, 1);
    png_byte exif[] = {'M', 'M', 0, 42, 0, 0, 0, 8, 0, 0, 0, 0, 0, 0};
    png_set_eXIf_1(png, info, sizeof exif, exif);
    png_set_oFFs(png, info, 1, 1, PNG_OFFSET_PIXEL);
}

std::unique_ptr<png::LibraryReader> readerAfterHeader(const PNGFile& file) {
    auto reader = std::make_unique<png::LibraryReader>(readerOfBytes(file.make()));
    EXPECT_TRUE(reader->readHeader().ok());
    return reader;
}

} // namespace

TEST(PNGLibraryReader, chunksThatNobodyNeedsAreSkipped) {
    const auto reader = readerAfterHeader({.before = addDescriptions});
    EXPECT_EQ(png_get_text(reader->png(), reader->info(), nullptr, nullptr), 0);
    EXPECT_EQ(png_get_sPLT(reader->png(), reader->info(), nullptr), 0);
    EXPECT_EQ(png_get_valid(reader->png(), reader->info(), PNG_INFO_eXIf | PNG_INFO_oFFs), 0u);
}

TEST(PNGLibraryReader, chunksThatDefineColoursAreRead) {
    const auto reader = readerAfterHeader({.before = [](png_structp png, png_infop info) {
        png_set_gAMA(png, info, 0.5);
        png_set_cHRM(png, info, 0.3127, 0.3290, 0.64, 0.33, 0.21, 0.71, 0.15, 0.06);
        png_set_pHYs(png, info, 100, 100, PNG_RESOLUTION_METER);
    }});
    const png_uint_32 needed = PNG_INFO_gAMA | PNG_INFO_cHRM | PNG_INFO_pHYs;
    EXPECT_EQ(png_get_valid(reader->png(), reader->info(), needed), needed);
}

} // namespace kestrine::testing
