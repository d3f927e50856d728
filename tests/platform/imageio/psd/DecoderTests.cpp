#include "tests/platform/imageio/Decoded.h"
#include "tests/platform/imageio/psd/PSDFile.h"
#include "tests/support/Pictures.h"

#include <bit>

namespace kestrine::testing {

namespace {

using Samples = std::vector<unsigned>;

Samples samplesOf(const PSDFile& file) {
    const PixelBuffer pixels = decodeSound(psd::codec, file.make()).pixels;
    Samples samples;
    for (std::uint32_t y = 0; y < pixels.format.height; ++y)
        for (std::uint32_t x = 0; x < pixels.format.width; ++x)
            for (std::size_t c = 0; c < pixels.format.channels(); ++c)
                samples.push_back(sampleAt(pixels, x, y, c));
    return samples;
}

FrameDescription frameOf(const PSDFile& file) { return decodeSound(psd::codec, file.make()).frame(); }

Reason reasonOf(const PSDFile& file) { return decode(psd::codec, file.make()).failure().reason; }

/// 2 x 1 pixels of red, green and blue, with one more plane.
PSDFile fourPlanes(const Bytes& layers) {
    return {.planes = 4, .layers = layers, .pixels = {255, 204, 255, 10, 255, 20, 0, 255}};
}

Bytes floats(std::initializer_list<float> values) {
    Bytes bytes;
    for (const float value : values)
        appendBigEndian(bytes, std::bit_cast<std::uint32_t>(value), 4);
    return bytes;
}

Bytes adobeProfile() {
    const ColorProfile adobe = ColorProfile::adobeRGB();
    return {adobe.bytes().begin(), adobe.bytes().end()};
}

/// The number with 16 fraction bits, and the units that follow it.
Bytes resolutionInfo(unsigned horizontal, unsigned vertical) {
    Bytes content;
    for (const unsigned value : {horizontal, vertical}) {
        appendBigEndian(content, value << 16, 4);
        appendBigEndian(content, 2, 2); // shown per centimetre
        appendBigEndian(content, 1, 2);
    }
    return content;
}

Bytes joined(const std::vector<Bytes>& parts) {
    Bytes all;
    for (const Bytes& part : parts)
        all.insert(all.end(), part.begin(), part.end());
    return all;
}

} // namespace

TEST(PSDDecoder, planesBecomePixels) {
    EXPECT_EQ(samplesOf({.pixels = {1, 2, 3, 4, 5, 6}}), (Samples{1, 3, 5, 2, 4, 6}));
    EXPECT_EQ(samplesOf({.bits = 16, .pixels = {0, 1, 0, 2, 0, 3, 0, 4, 0, 5, 1, 0}}),
              (Samples{1, 3, 5, 2, 4, 256}));
    EXPECT_EQ(samplesOf({.planes = 1, .height = 2, .mode = grayMode, .pixels = {1, 2, 3, 4}}),
              (Samples{1, 2, 3, 4}));
}

TEST(PSDDecoder, aSetBitIsBlack) {
    EXPECT_EQ(samplesOf({.planes = 1, .width = 9, .bits = 1, .mode = bitmap, .pixels = {0xA0, 0x80}}),
              (Samples{0, 255, 0, 255, 255, 255, 255, 255, 0}));
}

TEST(PSDDecoder, aDuotoneIsGray) {
    EXPECT_EQ(samplesOf({.planes = 1, .mode = duotone, .colorData = {1, 2, 3}, .pixels = {7, 8}}),
              (Samples{7, 8}));
}

TEST(PSDDecoder, indicesBecomeColors) {
    PSDFile file{.planes = 1, .mode = indexedMode, .colorData = Bytes(768), .pixels = {2, 255}};
    file.colorData[2] = 10;
    file.colorData[256 + 2] = 20;
    file.colorData[512 + 2] = 30;
    EXPECT_EQ(samplesOf(file), (Samples{10, 20, 30, 0, 0, 0}));
    EXPECT_EQ(decodeSound(psd::codec, file.make()).colorTable[7], 20);
    file.resources = resource(1047, {0, 255});
    EXPECT_EQ(samplesOf(file), (Samples{10, 20, 30, 255, 0, 0, 0, 0}));
    file.resources = resource(1047, {255, 255});
    EXPECT_FALSE(frameOf(file).format.hasAlpha) << "no index is transparent";
    file.colorData.resize(767);
    EXPECT_EQ(reasonOf(file), Reason::malformed);
}

TEST(PSDDecoder, inksAreStoredInverted) {
    EXPECT_EQ(samplesOf({.planes = 4, .mode = cmykMode, .pixels = {255, 51, 255, 102, 0, 153, 255, 255}}),
              (Samples{255, 255, 0, 51, 102, 153}));
    EXPECT_EQ(frameOf({.planes = 4, .mode = cmykMode, .pixels = Bytes(8)}).profile, ColorProfile::sRGB());
}

TEST(PSDDecoder, labOf8And16BitsBecomesSRGB) {
    EXPECT_EQ(samplesOf({.mode = labMode, .pixels = {255, 0, 128, 128, 128, 128}}),
              (Samples{255, 255, 255, 0, 0, 0}));
    const Samples red8 = samplesOf({.width = 1, .mode = labMode, .pixels = {138, 208, 195}});
    const Samples red16 =
        samplesOf({.width = 1, .bits = 16, .mode = labMode, .pixels = {138, 138, 208, 0, 195, 0}});
    EXPECT_NEAR(red8[0], 255, 2);
    EXPECT_NEAR(red8[1], 0, 12);
    for (std::size_t i = 0; i < 3; ++i)
        EXPECT_NEAR(red16[i], red8[i] * 257, 400) << i;
}

TEST(PSDDecoder, floatsAreLinearLightAndBecomeSRGB) {
    const PSDFile file{.width = 1, .bits = 32, .pixels = floats({0.2140411f, 7.f, -1.f})};
    const Samples samples = samplesOf(file);
    EXPECT_NEAR(samples[0], 0.5 * 65535, 100);
    EXPECT_EQ(samples[1], 65535u);
    EXPECT_EQ(samples[2], 0u);
    EXPECT_EQ(frameOf(file).profile, ColorProfile::sRGB());
    const PSDFile gray{.planes = 1, .width = 1, .bits = 32, .mode = grayMode, .pixels = floats({1})};
    EXPECT_EQ(samplesOf(gray), (Samples{65535, 65535, 65535}));
    EXPECT_EQ(frameOf(gray).format.model, ColorModel::rgb);
}

TEST(PSDDecoder, aFurtherPlaneIsAlphaOnlyIfTheNumberOfLayersIsNegative) {
    for (const Bytes& layers : {Bytes{}, layerSection(1)})
        EXPECT_EQ(samplesOf(fourPlanes(layers)), (Samples{255, 255, 255, 204, 10, 20})) << layers.size();
    EXPECT_TRUE(frameOf(fourPlanes(layerSection(-1))).format.hasAlpha);
    EXPECT_FALSE(frameOf({.layers = layerSection(-1), .pixels = Bytes(6)}).format.hasAlpha)
        << "no such plane";
}

TEST(PSDDecoder, whiteIsRemovedFromTranslucentColors) {
    PSDFile file = fourPlanes(layerSection(-1));
    file.pixels[7] = 128;
    EXPECT_EQ(samplesOf(file), (Samples{255, 255, 255, 0, 153, 0, 0, 128}));
    file.pixels = {200, 204, 200, 200, 200, 200, 255, 128};
    EXPECT_EQ(samplesOf(file), (Samples{200, 200, 200, 255, 153, 145, 145, 128}));
}

TEST(PSDDecoder, blocksAfterTheLayersSayTheSameAboutDeepPictures) {
    const auto hasAlpha = [](const Bytes& blocks, unsigned version = 1) {
        PSDFile file = fourPlanes(layerSection(0, blocks, version == 2 ? 8 : 4));
        file.version = version;
        return frameOf(file).format.hasAlpha;
    };
    const Bytes other = layerBlock("Patt", {1, 2, 3, 4, 5});
    EXPECT_FALSE(hasAlpha(other));
    EXPECT_TRUE(hasAlpha(joined({other, layerBlock("Lr16", {0xFF, 0xFE, 0, 0})})));
    EXPECT_FALSE(hasAlpha(joined({other, layerBlock("Lr16", {0, 2, 0, 0})})));
    EXPECT_TRUE(hasAlpha(joined({other, layerBlock("Mt16", {})})));
    EXPECT_TRUE(hasAlpha(joined({layerBlock("Lr32", {0, 2}, 8), layerBlock("Mt32", {}, 8)}), 2));
    EXPECT_FALSE(hasAlpha(layerBlock("Lr16", {0xFF}))) << "a block without a number";
}

TEST(PSDDecoder, packedRowsAreRead) {
    EXPECT_EQ(samplesOf({.planes = 1,
                         .width = 4,
                         .height = 2,
                         .mode = grayMode,
                         .compression = 1,
                         .pixels = {0, 5, 0, 5, 0, 1, 0xFF, 7, 128, 3, 5, 6, 7, 8}}),
              (Samples{1, 7, 7, 0, 5, 6, 7, 8}));
}

TEST(PSDDecoder, packedPlanesFollowEachOther) {
    const Bytes codes = {0xFF, 1, 1, 2, 3, 0xFF, 4};
    EXPECT_EQ(samplesOf({.compression = 1, .pixels = joined({{0, 2, 0, 3, 0, 2}, codes})}),
              (Samples{1, 2, 4, 1, 3, 4}));
    EXPECT_EQ(samplesOf({.version = 2,
                         .compression = 1,
                         .pixels = joined({{0, 0, 0, 2, 0, 0, 0, 3, 0, 0, 0, 2}, codes})}),
              (Samples{1, 2, 4, 1, 3, 4}));
}

TEST(PSDDecoder, packedRowsOfWrongLengthsAreTolerated) {
    const auto gray = [](const Bytes& pixels) {
        return samplesOf({.planes = 1, .height = 2, .mode = grayMode, .compression = 1, .pixels = pixels});
    };
    EXPECT_EQ(gray({0, 2, 0, 3, 0, 1, 1, 5, 6}), (Samples{1, 0, 5, 6})) << "too few samples";
    EXPECT_EQ(gray({0, 4, 0, 3, 2, 1, 2, 3, 1, 5, 6}), (Samples{1, 2, 5, 6})) << "too many samples";
    EXPECT_EQ(gray({0, 2, 0, 3, 0xF0, 1, 1, 5, 6}), (Samples{1, 1, 5, 6})) << "a run that is too long";
}

TEST(PSDDecoder, theResolutionIsReadWhateverUnitIsShown) {
    PSDFile file{.resources =
                     joined({resource(1061, {1, 2, 3}, "a name"), resource(1005, resolutionInfo(300, 150))}),
                 .pixels = Bytes(6)};
    EXPECT_EQ(frameOf(file).resolution, (Resolution{300, 150}));
    file.resources = resource(1005, {1, 44, 0, 0});
    EXPECT_EQ(frameOf(file).resolution, Resolution{}) << "too short";
}

TEST(PSDDecoder, theProfileAndTheExifBlockAreRead) {
    const Bytes exif = {'M', 'M', 0, 42, 0, 0, 0, 8};
    PSDFile file{.resources = joined({resource(1039, adobeProfile(), "odd"), resource(1058, exif)}),
                 .pixels = Bytes(6)};
    EXPECT_EQ(frameOf(file).profile, ColorProfile::adobeRGB());
    EXPECT_EQ(decodeSound(psd::codec, file.make()).exif, exif);
    file.resources = resource(1058, joined({{'E', 'x', 'i', 'f', 0, 0}, exif}));
    EXPECT_EQ(decodeSound(psd::codec, file.make()).exif, exif);
    EXPECT_FALSE(frameOf(file).profile.has_value());
}

TEST(PSDDecoder, damagedResourcesAreLeftOut) {
    Bytes resources = resource(1005, resolutionInfo(300, 300));
    resources[0] = 'x';
    PSDFile file{.resources = resources, .pixels = Bytes(6)};
    EXPECT_EQ(frameOf(file).resolution, Resolution{});
    file.resources = resource(1005, resolutionInfo(300, 300));
    file.resources.pop_back();
    EXPECT_EQ(frameOf(file).resolution, Resolution{});
}

TEST(PSDDecoder, withoutAMergedPictureTheFileIsRefused) {
    const Bytes versionInfo = {0, 0, 0, 1, 0, 0, 0, 0};
    PSDFile file{.resources = resource(1057, versionInfo), .layers = layerSection(2), .pixels = Bytes(6)};
    EXPECT_EQ(reasonOf(file), Reason::unsupported);
    file.layers.clear();
    EXPECT_EQ(samplesOf(file), Samples(6)) << "without layers the picture is there";
    file.resources[16] = 1;
    file.layers = layerSection(2);
    EXPECT_EQ(samplesOf(file), Samples(6));
}

TEST(PSDDecoder, unknownKindsAreRefused) {
    const Bytes pixels(96);
    EXPECT_EQ(reasonOf({.mode = multichannel, .pixels = pixels}), Reason::unsupported);
    EXPECT_EQ(reasonOf({.bits = 12, .pixels = pixels}), Reason::unsupported);
    EXPECT_EQ(reasonOf({.planes = 4, .bits = 32, .mode = cmykMode, .pixels = pixels}), Reason::unsupported);
    EXPECT_EQ(reasonOf({.compression = 2, .pixels = pixels}), Reason::unsupported);
    EXPECT_EQ(reasonOf({.planes = 2, .pixels = pixels}), Reason::malformed);
    EXPECT_EQ(reasonOf({.width = 0, .pixels = pixels}), Reason::empty);
    EXPECT_EQ(reasonOf({.width = 40000, .height = 40000, .pixels = pixels}), Reason::tooLarge);
    EXPECT_EQ(reasonOf({.version = 3, .pixels = pixels}), Reason::unsupported) << "not recognised";
}

TEST(PSDDecoder, cutOffFilesAreRefused) {
    for (const PSDFile& file :
         {PSDFile{.resources = resource(1005, resolutionInfo(300, 300)),
         .layers = layerSection(1),
         .pixels = {1, 2, 3, 4, 5, 6}},
          PSDFile{.compression = 1, .pixels = {0, 2, 0, 2, 0, 2, 0xFF, 1, 0xFF, 2, 0xFF, 3}}}) {
        const Bytes sound = file.make();
        for (std::size_t length = 6; length < sound.size(); ++length) {
            const auto decoded = decode(psd::codec, Bytes(sound.begin(), sound.begin() + length));
            ASSERT_FALSE(decoded.ok()) << length;
            EXPECT_EQ(decoded.failure().reason, Reason::truncated) << length;
        }
    }
}

} // namespace kestrine::testing
