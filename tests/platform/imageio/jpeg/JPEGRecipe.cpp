#include "tests/platform/imageio/jpeg/JPEGRecipe.h"

#include "tests/support/Pictures.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <jpeglib.h>
#include <random>

namespace kestrine::testing {

namespace {

PixelBuffer pixelsOf(const JPEGRecipe& recipe) {
    const RowFormat format{recipe.width, recipe.height, recipe.isGrey ? ColorModel::gray : ColorModel::rgb};
    if (recipe.content == Content::photo)
        return makePhoto(format);
    std::mt19937 random(recipe.width * 7 + recipe.height);
    const bool isFlat = recipe.content == Content::flat;
    return makePicture(format, [&](std::uint32_t, std::uint32_t, std::size_t channel) {
        return isFlat ? static_cast<unsigned>(70 + 50 * channel) : (random() & 1) * 255;
    });
}

/// Gives the longest codes to the most frequent symbols, which come first.
void reverseSymbols(JHUFF_TBL& code) {
    const int symbols = [&] {
        int sum = 0;
        for (int length = 1; length <= 16; ++length)
            sum += code.bits[length];
        return sum;
    }();
    std::reverse(code.huffval, code.huffval + symbols);
}

/// Gives the twelve DC symbols codes of the lengths 5 to 16.
void lengthen(JHUFF_TBL& code) {
    for (int length = 1; length <= 16; ++length)
        code.bits[length] = length >= 5;
}

/// The DC coefficients, then each bit of each AC coefficient in a separate scan.
std::vector<jpeg_scan_info> manyScans(int count) {
    constexpr int highestBit = 7;
    std::vector<jpeg_scan_info> scans = {{1, {0}, 0, 0, 0, 0}};
    for (int bit = highestBit; bit >= 0; --bit)
        for (int coefficient = 1; coefficient < DCTSIZE2; ++coefficient)
            scans.push_back({1, {0}, coefficient, coefficient, bit == highestBit ? 0 : bit + 1, bit});
    scans.resize(static_cast<std::size_t>(count));
    return scans;
}

std::vector<jpeg_scan_info> libraryScans(const std::vector<ScanRecipe>& script) {
    std::vector<jpeg_scan_info> scans;
    for (const ScanRecipe& recipe : script) {
        jpeg_scan_info scan{static_cast<int>(recipe.components.size()),
                            {},
                            recipe.first,
                            recipe.last,
                            recipe.high,
                            recipe.low};
        std::copy(recipe.components.begin(), recipe.components.end(), scan.component_index);
        scans.push_back(scan);
    }
    return scans;
}

void setUp(jpeg_compress_struct& info, const JPEGRecipe& recipe) {
    jpeg_set_defaults(&info);
    if (recipe.isStoredAsRGB)
        jpeg_set_colorspace(&info, JCS_RGB);
    jpeg_set_quality(&info, recipe.quality, recipe.hasWideQuantisers ? FALSE : TRUE);
    info.restart_interval = recipe.restartInterval;
    info.optimize_coding = recipe.codes == Codes::optimised;
    for (int c = 0; c < info.num_components && !recipe.isGrey; ++c) {
        info.comp_info[c].h_samp_factor = recipe.sampling.factors[static_cast<std::size_t>(c)][0];
        info.comp_info[c].v_samp_factor = recipe.sampling.factors[static_cast<std::size_t>(c)][1];
    }
    for (int i = 0; i < 2 && recipe.codes == Codes::longest; ++i) {
        reverseSymbols(*info.ac_huff_tbl_ptrs[i]);
        lengthen(*info.dc_huff_tbl_ptrs[i]);
    }
    if (recipe.isProgressive)
        jpeg_simple_progression(&info);
}

} // namespace

std::string JPEGRecipe::description() const {
    std::string text =
        std::to_string(width) + "x" + std::to_string(height) + (isGrey ? " grey" : " sampling");
    for (const auto& [horizontal, vertical] : sampling.factors)
        text += isGrey ? "" : " " + std::to_string(horizontal) + "," + std::to_string(vertical);
    return text + " quality " + std::to_string(quality) + " content "
           + std::to_string(static_cast<int>(content)) + " codes " + std::to_string(static_cast<int>(codes))
           + " restart " + std::to_string(restartInterval)
           + (script.empty() ? "" : " script of " + std::to_string(script.size()) + " scans");
}

Bytes makeJPEG(const JPEGRecipe& recipe) {
    PixelBuffer pixels = pixelsOf(recipe);
    jpeg_compress_struct info{};
    jpeg_error_mgr errors{};
    info.err = jpeg_std_error(&errors);
    errors.output_message = [](j_common_ptr) {};
    jpeg_create_compress(&info);
    unsigned char* memory = nullptr;
    unsigned long size = 0;
    jpeg_mem_dest(&info, &memory, &size);
    info.image_width = recipe.width;
    info.image_height = recipe.height;
    info.input_components = recipe.isGrey ? 1 : 3;
    info.in_color_space = recipe.isGrey ? JCS_GRAYSCALE : JCS_RGB;
    setUp(info, recipe);
    const std::vector<jpeg_scan_info> scans =
        recipe.scans > 0 ? manyScans(recipe.scans) : libraryScans(recipe.script);
    if (!scans.empty()) {
        info.scan_info = scans.data();
        info.num_scans = static_cast<int>(scans.size());
    }
    jpeg_start_compress(&info, TRUE);
    for (std::uint32_t y = 0; y < recipe.height; ++y) {
        JSAMPROW row = pixels.row(y).data();
        jpeg_write_scanlines(&info, &row, 1);
    }
    jpeg_finish_compress(&info);
    jpeg_destroy_compress(&info);
    Bytes file(memory, memory + size);
    std::free(memory);
    return file;
}

namespace {

int blocksPerMCU(const SamplingFactors& sampling) {
    int blocks = 0;
    for (const auto& [horizontal, vertical] : sampling.factors)
        blocks += horizontal * vertical;
    return blocks;
}

/// All samplings with the factors 1, 2 and 4.
std::vector<SamplingFactors> allSamplings() {
    std::vector<std::array<int, 2>> pairs;
    for (const int horizontal : {1, 2, 4})
        for (const int vertical : {1, 2, 4})
            pairs.push_back({horizontal, vertical});
    std::vector<SamplingFactors> samplings;
    for (const auto& y : pairs)
        for (const auto& cb : pairs)
            for (const auto& cr : pairs)
                if (constexpr int maxBlocks = 10; blocksPerMCU({{y, cb, cr}}) <= maxBlocks)
                    samplings.push_back({{y, cb, cr}});
    return samplings;
}

} // namespace

std::vector<JPEGRecipe> recipesForOurDecoder() {
    std::vector<JPEGRecipe> recipes;
    for (const SamplingFactors& sampling : allSamplings())
        recipes.push_back({.width = 75, .height = 53, .sampling = sampling, .quality = 60});
    for (const auto& sampling :
         {sampling444, sampling422, sampling420, sampling440, sampling411, sampling441, sampling410}) {
        for (unsigned side = 1; side <= 40; ++side)
            recipes.push_back({.width = side, .height = 41 - side, .sampling = sampling});
        recipes.push_back({.width = 701, .height = 333, .sampling = sampling});
        for (const unsigned interval : {1, 2, 7, 45})
            recipes.push_back(
                {.width = 333, .height = 70, .sampling = sampling, .restartInterval = interval});
        for (const Codes codes : {Codes::optimised, Codes::longest})
            recipes.push_back({.width = 150,
                               .height = 90,
                               .sampling = sampling,
                               .content = Content::noise,
                               .codes = codes});
        recipes.push_back({.width = 90, .height = 90, .sampling = sampling, .content = Content::flat});
    }
    for (unsigned side = 1; side <= 40; ++side)
        recipes.push_back({.width = side, .height = 2 * side, .isGrey = true, .restartInterval = side % 3});
    for (int quality = 1; quality <= 100; ++quality) {
        const Content content = quality % 2 == 0 ? Content::noise : Content::photo;
        recipes.push_back({.quality = quality, .hasWideQuantisers = true, .content = content});
        recipes.push_back({.isGrey = quality % 3 == 0,
                           .sampling = sampling422,
                           .quality = quality,
                           .content = content,
                           .codes = Codes::longest});
    }
    recipes.push_back({.width = 600,
                       .height = 500,
                       .sampling = sampling444,
                       .quality = 100,
                       .content = Content::noise}); // longer than the decoder's window
    return recipes;
}

std::vector<std::vector<ScanRecipe>> progressiveScripts() {
    return {
        // Without successive approximation.
        {{{0, 1, 2}, 0, 0, 0, 0}, {{0}, 1, 63, 0, 0}, {{1}, 1, 63, 0, 0}, {{2}, 1, 63, 0, 0}},
        {{{0}, 0, 0, 0, 0},
         {{0}, 1, 63, 0, 0},
         {{1, 2}, 0, 0, 0, 0},
         {{1}, 1, 5, 0, 0},
         {{2}, 1, 63, 0, 0},
         {{1}, 6, 63, 0, 0}},
        // DC coefficients in two parts and refined component by component, one of them at the end.
        {{{0, 2}, 0, 0, 0, 2},
         {{1}, 0, 0, 0, 1},
         {{0}, 1, 63, 0, 0},
         {{0, 2}, 0, 0, 2, 1},
         {{2}, 1, 63, 0, 1},
         {{0}, 0, 0, 1, 0},
         {{1}, 1, 63, 0, 1},
         {{1}, 1, 63, 1, 0},
         {{2}, 1, 63, 1, 0},
         {{1, 2}, 0, 0, 1, 0}},
        // Bands that are split, refined at different times and end before position 63.
        {{{0, 1, 2}, 0, 0, 0, 3}, {{0}, 1, 2, 0, 3},   {{0}, 3, 9, 0, 2},       {{1}, 1, 63, 0, 4},
         {{2}, 1, 1, 0, 0},       {{0}, 10, 62, 0, 1}, {{0}, 63, 63, 0, 0},     {{0}, 1, 2, 3, 2},
         {{0}, 1, 9, 2, 1},       {{0}, 1, 62, 1, 0},  {{0, 1, 2}, 0, 0, 3, 2}, {{2}, 2, 63, 0, 2},
         {{1}, 1, 63, 4, 3},      {{1}, 1, 63, 3, 2},  {{1}, 1, 63, 2, 1},      {{1}, 1, 63, 1, 0},
         {{2}, 2, 63, 2, 1},      {{2}, 2, 63, 1, 0},  {{0, 1, 2}, 0, 0, 2, 1}, {{0, 1, 2}, 0, 0, 1, 0}},
        // Every bit in a scan.
        {{{0, 1, 2}, 0, 0, 0, 7},
         {{0, 1, 2}, 0, 0, 7, 6},
         {{0, 1, 2}, 0, 0, 6, 5},
         {{0, 1, 2}, 0, 0, 5, 4},
         {{0, 1, 2}, 0, 0, 4, 3},
         {{0, 1, 2}, 0, 0, 3, 2},
         {{0, 1, 2}, 0, 0, 2, 1},
         {{0, 1, 2}, 0, 0, 1, 0},
         {{0}, 1, 63, 0, 6},
         {{0}, 1, 63, 6, 5},
         {{0}, 1, 63, 5, 4},
         {{0}, 1, 63, 4, 3},
         {{0}, 1, 63, 3, 2},
         {{0}, 1, 63, 2, 1},
         {{0}, 1, 63, 1, 0},
         {{1}, 1, 63, 0, 1},
         {{1}, 1, 63, 1, 0},
         {{2}, 1, 63, 0, 0}},
    };
}

std::vector<JPEGRecipe> progressiveRecipesForOurDecoder() {
    std::vector<JPEGRecipe> recipes;
    for (JPEGRecipe recipe : recipesForOurDecoder()) {
        recipe.isProgressive = true;
        recipes.push_back(recipe);
    }
    for (const std::vector<ScanRecipe>& script : progressiveScripts())
        for (const auto& sampling : {sampling444, sampling422, sampling420, sampling440, sampling410})
            for (const unsigned interval : {0, 1, 5})
                for (const Content content : {Content::photo, Content::noise, Content::flat})
                    recipes.push_back({.width = 117 + interval,
                                       .height = 75 + interval,
                                       .sampling = sampling,
                                       .quality = content == Content::noise ? 97 : 75,
                                       .content = content,
                                       .restartInterval = interval,
                                       .isProgressive = true,
                                       .script = script});
    return recipes;
}

} // namespace kestrine::testing
