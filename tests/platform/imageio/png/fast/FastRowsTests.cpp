// Compares the fast PNG decoder with libpng: both give the same rows, or fail with the same message.

#include "platform/imageio/png/fast/FastRows.h"

#include "platform/imageio/png/LibraryRows.h"
#include "platform/imageio/png/fast/InflatedPixels.h"
#include "tests/platform/imageio/png/PNGRecipe.h"
#include "tests/support/Pictures.h"

#include <gtest/gtest.h>

namespace kestrine::testing {

namespace {

struct Kind {
    std::uint8_t colorType, bitDepth;
};
constexpr Kind kinds[] = {{0, 8}, {0, 16}, {2, 8}, {2, 16}, {4, 8}, {4, 16}, {6, 8}, {6, 16}};

/// The pixels of a file, or why there are none.
struct Outcome {
    bool isFast = false; ///< whether the fast decoder supports the file
    std::optional<PixelBuffer> pixels;
    std::string failure; ///< also the damage of pixels
};

Outcome outcomeOf(RowSourcePointer rows, const DamageRecord& damage) {
    Result<PixelBuffer> pixels = readAllRows(*rows);
    if (!pixels)
        return {.failure = pixels.failure().text};
    return {.pixels = std::move(*pixels), .failure = damage.first() ? damage.first()->text : ""};
}

Outcome readByLibrary(const Bytes& file) {
    auto reader = std::make_unique<png::LibraryReader>(readerOfBytes(file));
    if (const Result<void> header = reader->readHeader(); !header)
        return {.failure = header.failure().text};
    const auto damage = std::make_shared<DamageRecord>();
    return outcomeOf(std::make_unique<png::LibraryRows>(std::move(reader), damage), *damage);
}

Outcome readFast(const Bytes& file) {
    const auto bytes = readerOfBytes(file);
    png::LibraryReader reader(bytes);
    if (Result<void> header = reader.readHeader(); !header)
        return {.failure = header.failure().text};
    const auto damage = std::make_shared<DamageRecord>();
    RowSourcePointer rows = png::openFastRows(reader, bytes, damage);
    if (!rows)
        return {};
    Outcome outcome = outcomeOf(std::move(rows), *damage);
    outcome.isFast = true;
    return outcome;
}

/// Reads a file with both decoders, expects the same result, and returns whether it is readable.
bool isReadLikeByLibrary(const Bytes& file) {
    const Outcome expected = readByLibrary(file), fast = readFast(file);
    EXPECT_EQ(fast.failure, expected.failure);
    EXPECT_EQ(fast.pixels.has_value(), expected.pixels.has_value());
    if (fast.pixels && expected.pixels) {
        EXPECT_TRUE(samePicture(*fast.pixels, *expected.pixels));
    }
    return fast.pixels.has_value() && fast.failure.empty();
}

/// Whether ISA-L decodes all pixels, so that libpng has to check only the rest.
bool isInflatedCompletely(const Bytes& file) {
    const auto bytes = readerOfBytes(file);
    png::LibraryReader reader(bytes);
    EXPECT_TRUE(reader.readHeader().ok());
    png::InflatedPixels pixels(*png::inflateFunctions(), bytes, reader.offsetOfPixels());
    Bytes rows(reader.storedBytes());
    return pixels.read(rows) && pixels.endsHere();
}

PNGRecipe photo(std::uint32_t width = 61, std::uint32_t height = 40) {
    std::mt19937 random(5);
    PNGRecipe recipe{.width = width, .height = height, .colorType = 6};
    return recipe.randomRows(random, -1, 24);
}

class FastRows : public ::testing::Test {
protected:
    void SetUp() override {
        if (!png::inflateFunctions())
            GTEST_SKIP() << "ISA-L is not installed";
    }
};

} // namespace

TEST_F(FastRows, everyKindAndFilterGivesTheRowsOfLibpng) {
    std::mt19937 random(1);
    for (const Kind& kind : kinds)
        for (int filter = -1; filter < 5; ++filter)
            for (const std::uint32_t width : {1u, 2u, 3u, 7u, 16u, 33u, 100u}) {
                PNGRecipe recipe{
                    .width = width, .height = 23, .bitDepth = kind.bitDepth, .colorType = kind.colorType};
                const Bytes file = recipe.randomRows(random, filter).make();
                EXPECT_TRUE(isReadLikeByLibrary(file)) << int(kind.colorType) << ' ' << int(kind.bitDepth)
                                                       << " filter " << filter << " width " << width;
                EXPECT_TRUE(readFast(file).isFast && isInflatedCompletely(file));
            }
}

TEST_F(FastRows, picturesOfManyBandsAreDecoded) {
    std::mt19937 random(2);
    for (const Kind& kind : kinds) {
        PNGRecipe recipe{.width = 300, .height = 300, .bitDepth = kind.bitDepth, .colorType = kind.colorType};
        for (const unsigned spread : {256u, 8u})
            EXPECT_TRUE(isReadLikeByLibrary(recipe.randomRows(random, -1, spread).make()));
        EXPECT_TRUE(isReadLikeByLibrary(recipe.randomRows(random, 4, 8).make()));
    }
}

TEST_F(FastRows, aRowLongerThanABandIsDecoded) {
    std::mt19937 random(2);
    PNGRecipe recipe{.width = 70'000, .height = 3, .bitDepth = 16, .colorType = 6};
    EXPECT_TRUE(isReadLikeByLibrary(recipe.randomRows(random, -1, 8).make()));
}

TEST_F(FastRows, everyCompressionLevelIsDecoded) {
    for (int level = 0; level <= 9; ++level) {
        const Bytes file = photo(300, 200).compress(level).make();
        EXPECT_TRUE(isReadLikeByLibrary(file) && isInflatedCompletely(file)) << level;
    }
}

TEST_F(FastRows, theStreamCanBeSplitIntoChunksAnywhere) {
    for (const std::size_t chunkBytes : {1, 2, 3, 7, 8192}) {
        PNGRecipe recipe = photo();
        recipe.chunkBytes = chunkBytes;
        EXPECT_TRUE(isReadLikeByLibrary(recipe.make()) && isInflatedCompletely(recipe.make())) << chunkBytes;
    }
}

TEST_F(FastRows, emptyChunksAreSkipped) {
    PNGRecipe recipe = photo();
    addChunk(recipe.before, "IDAT", {});
    addChunk(recipe.before, "IDAT", ByteView(recipe.stream).first(100));
    addChunk(recipe.before, "IDAT", {});
    recipe.stream.erase(recipe.stream.begin(), recipe.stream.begin() + 100);
    addChunk(recipe.after, "IDAT", {});
    EXPECT_TRUE(isReadLikeByLibrary(recipe.make()) && isInflatedCompletely(recipe.make()));
}

TEST_F(FastRows, indicesOf8BitsBecomeColours) {
    std::mt19937 random(3);
    for (const bool isTransparent : {false, true}) {
        PNGRecipe recipe{.width = 50, .height = 30, .colorType = 3};
        Bytes colors(3 * 200);
        for (std::uint8_t& c : colors)
            c = static_cast<std::uint8_t>(random());
        addChunk(recipe.before, "PLTE", colors);
        if (isTransparent)
            addChunk(recipe.before, "tRNS", Bytes{0, 7, 200});
        const Bytes file = recipe.randomRows(random).make(); // with indices beyond the table
        EXPECT_TRUE(isReadLikeByLibrary(file));
        EXPECT_TRUE(readFast(file).isFast);
    }
}

TEST_F(FastRows, otherKindsAreLeftToLibpng) {
    std::mt19937 random(3);
    PNGRecipe transparent{.colorType = 2};
    addChunk(transparent.before, "tRNS", Bytes{0, 1, 0, 2, 0, 3});
    EXPECT_FALSE(readFast(transparent.randomRows(random).make()).isFast);
    PNGRecipe bits{.width = 8, .height = 1, .bitDepth = 1, .colorType = 0};
    bits.rows = {0, 0xA5};
    EXPECT_FALSE(readFast(bits.compress().make()).isFast);
}

TEST_F(FastRows, aStreamCutOffAnywhereIsRefusedLikeByLibpng) {
    const PNGRecipe whole = photo(9, 6);
    std::size_t readable = 0;
    for (std::size_t length = 0; length < whole.stream.size(); ++length) {
        PNGRecipe cut = whole;
        cut.stream.resize(length);
        readable += isReadLikeByLibrary(cut.make()) ? 1 : 0;
    }
    EXPECT_LE(readable, 4u) << "only the stream's own checksum may be missing";
}

TEST_F(FastRows, aStreamDamagedAnywhereGivesTheResultOfLibpng) {
    const PNGRecipe whole = photo(9, 6);
    for (std::size_t at = 0; at < whole.stream.size(); ++at)
        for (const int bit : {0, 3, 7}) {
            PNGRecipe damaged = whole;
            damaged.stream[at] ^= static_cast<std::uint8_t>(1 << bit);
            isReadLikeByLibrary(damaged.make());
            if (isInflatedCompletely(damaged.make())) {
                EXPECT_TRUE(
                    samePicture(*readFast(damaged.make()).pixels, *readByLibrary(whole.make()).pixels))
                    << "only what fills the last byte may change unnoticed";
            }
        }
}

TEST_F(FastRows, aFileDamagedOrCutOffAnywhereGivesTheResultOfLibpng) {
    PNGRecipe recipe = photo(9, 6);
    addChunk(recipe.after, "tEXt", Bytes{'a', 0, 'b'});
    const Bytes whole = recipe.make();
    for (std::size_t at = 8; at < whole.size(); ++at) {
        Bytes damaged = whole;
        damaged[at] ^= 0x10;
        isReadLikeByLibrary(damaged);
        damaged.resize(at);
        EXPECT_FALSE(isReadLikeByLibrary(damaged)) << at;
    }
}

TEST_F(FastRows, libpngDecidesAboutTheChunksAfterThePixels) {
    const Bytes text = {'a', 0, 'b'};
    struct Case {
        const char* type;
        std::uint32_t error;
        bool isReadable;
    };
    for (const Case& c : {Case{"tEXt", 0, true},
                          {"tEXt", 1, true},
                          {"IDAT", 0, true},
                          {"IDAT", 1, false},
                          {"PLTE", 1, false},
                          {"NEWC", 0, true},
                          {"IHDR", 0, false},
                          {"a?bc", 0, false}}) {
        PNGRecipe recipe = photo();
        addChunk(recipe.after, "tIME", Bytes{7, 0, 1, 1, 1, 1, 1});
        addChunk(recipe.after, c.type, text, c.error);
        EXPECT_EQ(isReadLikeByLibrary(recipe.make()), c.isReadable) << c.type;
    }
}

TEST_F(FastRows, libpngDecidesAboutStreamsWithAnUnusualEnd) {
    PNGRecipe surplus = photo(), trailing = photo(), wrongChecksum = photo(), smallWindow = photo();
    surplus.rows.insert(surplus.rows.end(), 5000, 9);
    surplus.compress();
    trailing.stream.insert(trailing.stream.end(), 3, 0);
    wrongChecksum.stream.back() ^= 1;
    smallWindow.compress(6, 9); // smaller, perhaps, than its distances
    EXPECT_TRUE(isReadLikeByLibrary(surplus.make()));
    EXPECT_TRUE(isReadLikeByLibrary(trailing.make()));
    EXPECT_FALSE(isReadLikeByLibrary(wrongChecksum.make()));
    EXPECT_TRUE(isReadLikeByLibrary(smallWindow.make()));
    for (const PNGRecipe& recipe : {surplus, trailing, wrongChecksum, smallWindow})
        EXPECT_FALSE(isInflatedCompletely(recipe.make()));
}

TEST_F(FastRows, anUnknownFilterInAnyRowIsRefusedLikeByLibpng) {
    for (const std::uint32_t row : {0u, 17u, 699u}) {
        PNGRecipe recipe = photo(500, 700);
        recipe.rows[row * (recipe.rowBytes() + 1)] = 5;
        EXPECT_FALSE(isReadLikeByLibrary(recipe.compress().make())) << row;
    }
}

TEST(InflateLibrary, aMissingLibraryIsReportedWithItsPackage) {
    for (const auto& functions :
         {png::loadInflateFunctions({"libisal.so.0"}), png::loadInflateFunctions({"libm.so.6"})}) {
        ASSERT_FALSE(functions.ok());
        EXPECT_NE(functions.failure().text.find("libisal2"), std::string::npos);
    }
}

} // namespace kestrine::testing
