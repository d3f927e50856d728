// Compares the kernels of our JPEG decoder with libjpeg-turbo itself, by real files. The tests of each kernel
// compare all vector targets with the plain loops.

#include "platform/host/Bytes.h"
#include "platform/imageio/jpeg/Library.h"
#include "platform/imageio/jpeg/kernels/ChromaUpsampling.h"
#include "platform/imageio/jpeg/kernels/InverseDCT.h"
#include "platform/imageio/jpeg/kernels/YCbCrToRGB.h"
#include "tests/support/SystemFeatures.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <random>
#include <vector>

namespace kestrine {

namespace {

using Block = std::array<std::int16_t, kernels::dctCoefficients>;
using Quantisation = std::array<std::uint16_t, kernels::dctCoefficients>;

constexpr int dctSizes[] = {8, 4, 2, 1};

/// Owns one compression into memory.
struct Compression {
    jpeg_compress_struct info{};
    jpeg::Errors errors{};
    unsigned char* bytes = nullptr;
    unsigned long size = 0;

    Compression(int width, int height, int components) {
        info.err = errors.prepare();
        jpeg_create_compress(&info);
        jpeg_mem_dest(&info, &bytes, &size);
        info.image_width = static_cast<unsigned>(width);
        info.image_height = static_cast<unsigned>(height);
        info.input_components = components;
        info.in_color_space = components == 1 ? JCS_GRAYSCALE : JCS_RGB;
        jpeg_set_defaults(&info);
    }
    ~Compression() {
        jpeg_destroy_compress(&info);
        std::free(bytes);
    }
    Compression(const Compression&) = delete;
    Compression& operator=(const Compression&) = delete;

    Bytes result() const { return Bytes(bytes, bytes + size); }
};

/// Owns one decompression from memory, up to the start of the output.
struct Decompression {
    jpeg_decompress_struct info{};
    jpeg::Errors errors{};

    ~Decompression() { jpeg_destroy_decompress(&info); }
    Decompression(const Bytes& jpeg, int eighths, J_COLOR_SPACE space, bool raw) {
        info.err = errors.prepare();
        jpeg_create_decompress(&info);
        isStarted = succeedsInLibrary(errors, [&] {
            jpeg_mem_src(&info, jpeg.data(), jpeg.size());
            jpeg_read_header(&info, TRUE);
            info.scale_num = static_cast<unsigned>(eighths);
            info.scale_denom = 8;
            info.out_color_space = space;
            info.raw_data_out = raw ? TRUE : FALSE;
            jpeg_start_decompress(&info);
        });
    }
    Decompression(const Decompression&) = delete;
    Decompression& operator=(const Decompression&) = delete;

    bool isStarted = false;
};

/// A grey picture of `blocks`, with `across` blocks per row. It is arithmetically coded, which allows all
/// 16-bit coefficients.
Bytes jpegOfBlocks(const std::vector<Block>& blocks, const Quantisation& quantisation, int across) {
    const int down = static_cast<int>(blocks.size()) / across;
    Compression compression(across * 8, down * 8, 1);
    jpeg_compress_struct& info = compression.info;
    const bool isWritten = succeedsInLibrary(compression.errors, [&] {
        std::copy(quantisation.begin(), quantisation.end(), info.quant_tbl_ptrs[0]->quantval);
        info.arith_code = TRUE;
        auto* memory = info.mem;
        auto* const common = reinterpret_cast<j_common_ptr>(&info);
        jvirt_barray_ptr array = memory->request_virt_barray(
            common, JPOOL_IMAGE, TRUE, static_cast<unsigned>(across), static_cast<unsigned>(down), 1);
        memory->realize_virt_arrays(common);
        jpeg_write_coefficients(&info, &array);
        for (int y = 0; y < down; ++y) {
            JBLOCKARRAY row = memory->access_virt_barray(common, array, static_cast<unsigned>(y), 1, TRUE);
            for (int x = 0; x < across; ++x)
                std::memcpy(row[0][x], blocks[static_cast<std::size_t>(y * across + x)].data(),
                            sizeof(JBLOCK));
        }
        jpeg_finish_compress(&info);
    });
    EXPECT_TRUE(isWritten) << compression.errors.text;
    return compression.result();
}

/// All rows of a picture.
Bytes decodedByLibrary(const Bytes& jpeg, int eighths, J_COLOR_SPACE space) {
    Decompression decompression(jpeg, eighths, space, false);
    jpeg_decompress_struct& info = decompression.info;
    EXPECT_TRUE(decompression.isStarted) << decompression.errors.text;
    const std::size_t stride = std::size_t{info.output_width} * static_cast<unsigned>(info.output_components);
    Bytes samples(stride * info.output_height);
    EXPECT_TRUE(succeedsInLibrary(decompression.errors, [&] {
        while (info.output_scanline < info.output_height) {
            JSAMPROW row = samples.data() + info.output_scanline * stride;
            jpeg_read_scanlines(&info, &row, 1);
        }
    }));
    EXPECT_EQ(decompression.errors.manager.num_warnings, 0);
    return samples;
}

/// `across` is a multiple of dctLanes.
Bytes decodedByKernel(const std::vector<Block>& blocks, const Quantisation& quantisation, int across,
                      int size) {
    const std::ptrdiff_t stride = across * size;
    Bytes samples(blocks.size() * static_cast<std::size_t>(size * size));
    for (std::size_t first = 0; first < blocks.size(); first += kernels::dctLanes) {
        std::array<std::int16_t, kernels::dctCoefficients * kernels::dctLanes> group;
        for (std::size_t z = 0; z < kernels::dctCoefficients; ++z)
            for (std::size_t lane = 0; lane < kernels::dctLanes; ++lane)
                group[z * kernels::dctLanes + lane] = blocks[first + lane][z];
        const auto x = static_cast<std::ptrdiff_t>(first) % across,
                   y = static_cast<std::ptrdiff_t>(first) / across;
        kernels::inverseDCT(size, group.data(), quantisation.data(), kernels::dctCoefficients - 1,
                            samples.data() + y * size * stride + x * size, size, stride);
    }
    return samples;
}

/// Whether the coefficient at a column and row may differ from 0.
using Place = bool (*)(int x, int y);

struct BlockKind {
    const char* name;
    int largestCoefficient, largestQuantiser, percent;
    Place place;
};

bool anywhere(int, int) { return true; }
bool firstRow(int, int y) { return y == 0; }
bool firstColumn(int x, int) { return x == 0; }
bool meanAlone(int x, int y) { return x == 0 && y == 0; }
bool rowsZeroAndFour(int, int y) { return y % 4 == 0; }
bool low(int x, int y) { return x < 4 && y < 4; }

constexpr BlockKind kinds[] = {
    {"camera picture", 100, 16, 10, anywhere},
    {"all coefficients", 200, 16, 100, anywhere},
    {"sums that saturate", 1000, 8, 30, anywhere},
    {"products that wrap", 1023, 255, 100, anywhere},
    {"16-bit quantisers", 1023, 65535, 20, anywhere},
    {"the largest numbers", 16000, 65535, 30, anywhere},
    {"one large number", 16000, 8, 2, anywhere},
    {"the short cut's limit", 8193, 1, 100, firstRow},
    {"a first row that wraps", 16000, 65535, 100, firstRow},
    {"means that wrap", 16000, 65535, 100, meanAlone},
    {"a first column that wraps", 1023, 255, 60, firstColumn},
    {"rows that are left out at half size", 1023, 255, 60, rowsZeroAndFour},
    {"low coefficients that saturate", 10000, 1, 80, low},
};

std::vector<Block> randomBlocks(const BlockKind& kind, std::size_t count, std::mt19937& random) {
    std::uniform_int_distribution<int> percent(0, 99),
        value(-kind.largestCoefficient, kind.largestCoefficient);
    constexpr int percentAtTheLimit = 20;
    std::vector<Block> blocks(count);
    for (Block& block : blocks)
        for (int z = 0; z < kernels::dctCoefficients; ++z) {
            const bool isUsed = kind.place(z % 8, z / 8) && percent(random) < kind.percent;
            const int inside = value(random),
                      limit = inside < 0 ? -kind.largestCoefficient : kind.largestCoefficient;
            if (isUsed)
                block[static_cast<std::size_t>(z)] =
                    static_cast<std::int16_t>(percent(random) < percentAtTheLimit ? limit : inside);
        }
    return blocks;
}

Quantisation randomQuantisation(int largest, std::mt19937& random) {
    Quantisation quantisation;
    for (auto& quantiser : quantisation)
        quantiser = static_cast<std::uint16_t>(std::uniform_int_distribution<int>(1, largest)(random));
    return quantisation;
}

/// The samples of a component before upsampling, including the padding of blocks.
struct LibraryPlane {
    Bytes samples;
    std::size_t stride = 0, width = 0, height = 0; ///< width and height without padding
    int across = 1, down = 1;                      ///< pixels per sample

    const std::uint8_t* row(std::size_t y) const { return samples.data() + y * stride; }
};

constexpr std::size_t components = 3;

std::array<LibraryPlane, components> planesOfLibrary(const Bytes& jpeg, int eighths) {
    Decompression decompression(jpeg, eighths, JCS_YCbCr, true);
    jpeg_decompress_struct& info = decompression.info;
    EXPECT_TRUE(decompression.isStarted) << decompression.errors.text;
    std::array<LibraryPlane, components> planes;
    std::array<std::vector<JSAMPROW>, components> rows;
    for (std::size_t c = 0; c < components; ++c) {
        const jpeg_component_info& component = info.comp_info[c];
        const auto size = static_cast<std::size_t>(component.DCT_scaled_size);
        LibraryPlane& plane = planes[c];
        plane.stride = (component.width_in_blocks + 4) * size;
        plane.width = component.downsampled_width;
        plane.height = component.downsampled_height;
        plane.samples.resize(plane.stride * (component.height_in_blocks + 4) * size);
        plane.across = info.max_h_samp_factor * info.min_DCT_scaled_size
                       / (component.h_samp_factor * static_cast<int>(size));
        plane.down = info.max_v_samp_factor * info.min_DCT_scaled_size
                     / (component.v_samp_factor * static_cast<int>(size));
        rows[c].resize(static_cast<std::size_t>(component.v_samp_factor) * size);
    }
    const unsigned rowsPerBand = static_cast<unsigned>(info.max_v_samp_factor * info.min_DCT_scaled_size);
    for (std::size_t band = 0; info.output_scanline < info.output_height; ++band) {
        JSAMPARRAY pointers[components];
        for (std::size_t c = 0; c < components; ++c) {
            for (std::size_t y = 0; y < rows[c].size(); ++y)
                rows[c][y] = planes[c].samples.data() + (band * rows[c].size() + y) * planes[c].stride;
            pointers[c] = rows[c].data();
        }
        if (!succeedsInLibrary(decompression.errors,
                               [&] { jpeg_read_raw_data(&info, pointers, rowsPerBand); })) {
            ADD_FAILURE() << decompression.errors.text;
            break;
        }
    }
    return planes;
}

/// Row `y` of the picture, made by the kernel that the library uses in this case.
Bytes upsampledRow(const LibraryPlane& plane, std::size_t y, bool isReducedToAnEighth) {
    const std::size_t place = y / static_cast<std::size_t>(plane.down), last = plane.height - 1;
    const bool isUpper = y % 2 == 0;
    const std::size_t neighbour = isUpper ? (place == 0 ? 0 : place - 1) : std::min(place + 1, last);
    const std::uint8_t *nearRow = plane.row(place), *farRow = plane.row(neighbour);
    Bytes row(plane.width * static_cast<std::size_t>(plane.across));
    const bool isWide = plane.width > 2;
    if (!isReducedToAnEighth && plane.across == 1 && plane.down == 2)
        kernels::upsampleH1V2Fancy(nearRow, farRow, isUpper, plane.width, row.data());
    else if (!isReducedToAnEighth && isWide && plane.across == 2 && plane.down == 1)
        kernels::upsampleH2V1Fancy(nearRow, plane.width, row.data());
    else if (!isReducedToAnEighth && isWide && plane.across == 2 && plane.down == 2)
        kernels::upsampleH2V2Fancy(nearRow, farRow, plane.width, row.data());
    else
        kernels::replicate(nearRow, plane.width, plane.across, row.data());
    return row;
}

/// The sampling factors of luma and of both colour components.
struct Sampling {
    int h, v, colorH, colorV;
};

constexpr Sampling samplings[] = {{1, 1, 1, 1}, {2, 1, 1, 1}, {1, 2, 1, 1}, {2, 2, 1, 1}, {4, 1, 1, 1},
                                  {1, 4, 1, 1}, {4, 2, 1, 1}, {4, 1, 2, 1}, {2, 2, 1, 2}, {2, 2, 2, 1}};

Bytes randomJPEG(int width, int height, const Sampling& sampling, std::mt19937& random) {
    Bytes pixels(static_cast<std::size_t>(width * height * 3));
    for (auto& sample : pixels)
        sample = static_cast<std::uint8_t>(random());
    Compression compression(width, height, 3);
    jpeg_compress_struct& info = compression.info;
    const bool isWritten = succeedsInLibrary(compression.errors, [&] {
        jpeg_set_quality(&info, 95, TRUE);
        for (int c = 0; c < 3; ++c) {
            info.comp_info[c].h_samp_factor = c == 0 ? sampling.h : sampling.colorH;
            info.comp_info[c].v_samp_factor = c == 0 ? sampling.v : sampling.colorV;
        }
        jpeg_start_compress(&info, TRUE);
        while (info.next_scanline < info.image_height) {
            JSAMPROW row = pixels.data() + info.next_scanline * info.image_width * 3;
            jpeg_write_scanlines(&info, &row, 1);
        }
        jpeg_finish_compress(&info);
    });
    EXPECT_TRUE(isWritten) << compression.errors.text;
    return compression.result();
}

std::string nameOf(const Sampling& s) {
    return std::to_string(s.h) + "x" + std::to_string(s.v) + "," + std::to_string(s.colorH) + "x"
           + std::to_string(s.colorV);
}

} // namespace

TEST(JPEGKernels, blocksBecomeTheSamplesOfTheLibraryAtEverySize) {
    if (!testing::libraryOverflowsAsOnX86)
        GTEST_SKIP() << "sums that do not fit give other samples in this processor's libjpeg-turbo";
    constexpr int across = 64;
    std::mt19937 random(1);
    for (const BlockKind& kind : kinds)
        for (int repetition = 0; repetition < 2; ++repetition) {
            const Quantisation quantisation = randomQuantisation(kind.largestQuantiser, random);
            const std::vector<Block> blocks = randomBlocks(kind, 2048, random);
            const Bytes jpeg = jpegOfBlocks(blocks, quantisation, across);
            for (const int size : dctSizes)
                ASSERT_EQ(decodedByKernel(blocks, quantisation, across, size),
                          decodedByLibrary(jpeg, size, JCS_GRAYSCALE))
                    << kind.name << ", size " << size;
        }
}

TEST(JPEGKernels, expandedRowsEqualTheLibrarysForEverySamplingWidthAndSize) {
    std::mt19937 random(2);
    for (const Sampling& sampling : samplings)
        for (const int width : {1, 2, 3, 4, 5, 6, 7, 8, 9, 15, 16, 17, 31, 33, 40, 77, 150})
            for (const int height : {1, 2, 3, 9, 16, 33}) {
                const Bytes jpeg = randomJPEG(width, height, sampling, random);
                for (const int size : dctSizes) {
                    const auto planes = planesOfLibrary(jpeg, size);
                    const Bytes expected = decodedByLibrary(jpeg, size, JCS_YCbCr);
                    const std::size_t outWidth = planes[0].width, outHeight = planes[0].height;
                    for (std::size_t c = 0; c < components; ++c)
                        for (std::size_t y = 0; y < outHeight; ++y) {
                            const Bytes row = upsampledRow(planes[c], y, size == 1);
                            for (std::size_t x = 0; x < outWidth; ++x)
                                ASSERT_EQ(row[x], expected[(y * outWidth + x) * components + c])
                                    << nameOf(sampling) << ", " << width << " x " << height << ", size "
                                    << size << ", component " << c << " at " << x << ", " << y;
                        }
                }
            }
}

TEST(JPEGKernels, coloursEqualTheLibrarys) {
    std::mt19937 random(3);
    const int width = 301, height = 200;
    const Bytes jpeg = randomJPEG(width, height, {1, 1, 1, 1}, random);
    const auto planes = planesOfLibrary(jpeg, 8);
    const Bytes expected = decodedByLibrary(jpeg, 8, JCS_RGB);
    Bytes rgb(expected.size());
    for (std::size_t y = 0; y < height; ++y)
        kernels::convertYCbCrToRGB(planes[0].row(y), planes[1].row(y), planes[2].row(y), width,
                                   rgb.data() + y * width * components);
    EXPECT_EQ(rgb, expected);
}

} // namespace kestrine
