#include "platform/imageio/gif/Compression.h"

#include "tests/platform/imageio/gif/GIFFile.h"

#include <gtest/gtest.h>
#include <random>

namespace kestrine::testing {

namespace {

/// The indices as the only row of a grey GIF.
Bytes fileOf(ByteView indices, unsigned bits) {
    const std::size_t width = indices.size();
    Bytes file = {'G',
                  'I',
                  'F',
                  '8',
                  '9',
                  'a',
                  static_cast<std::uint8_t>(width),
                  static_cast<std::uint8_t>(width >> 8),
                  1,
                  0,
                  static_cast<std::uint8_t>(0xF0 | (bits - 1)),
                  0,
                  0};
    for (unsigned color = 0; color < 1u << bits; ++color)
        file.insert(file.end(), 3, static_cast<std::uint8_t>(color));
    file.insert(file.end(), {',', 0, 0, 0, 0, file[6], file[7], 1, 0, 0});
    gif::Compression compression(bits, file);
    compression.add(indices.first(width / 3));
    compression.add(indices.subspan(width / 3));
    compression.finish();
    file.push_back(';');
    return file;
}

} // namespace

TEST(GIFCompression, compressedIndicesAreDecodedUnchanged) {
    std::mt19937 random(1);
    for (unsigned bits = 2; bits <= 8; ++bits)
        for (const std::size_t count : {1u, 2u, 3u, 4u, 5u, 255u, 4095u, 4096u, 60000u}) {
            Bytes indices(count);
            for (std::uint8_t& index : indices)
                index = static_cast<std::uint8_t>(random() >> 7 & ((1u << bits) - 1));
            EXPECT_EQ(readStoredGIF(fileOf(indices, bits)).indices, indices) << bits << " bits, " << count;
        }
}

TEST(GIFCompression, runsOfEveryLengthAreDecodedUnchanged) {
    for (std::size_t count = 1; count < 3000; ++count) {
        const Bytes indices(count, 3);
        ASSERT_EQ(readStoredGIF(fileOf(indices, 2)).indices, indices) << count;
    }
}

TEST(GIFCompression, aRepeatingPatternIsCompressed) {
    Bytes indices(65000);
    for (std::size_t i = 0; i < indices.size(); ++i)
        indices[i] = static_cast<std::uint8_t>(i % 7);
    const Bytes file = fileOf(indices, 3);
    EXPECT_LT(file.size(), 2000u);
    EXPECT_EQ(readStoredGIF(file).indices, indices);
}

} // namespace kestrine::testing
