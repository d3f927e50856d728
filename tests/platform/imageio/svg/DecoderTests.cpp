// SVG drawings: which files are drawings, their size, and what is drawn.
#include "tests/platform/imageio/Decoded.h"
#include "tests/support/Pictures.h"
#include "tests/support/SourceFolder.h"
#include "tests/support/TemporaryFolder.h"

#include "platform/imageio/LocalSource.h"
#include "platform/imageio/Render.h"
#include "platform/imageio/svg/Library.h"
#include "platform/imageio/svg/Text.h"

#include <cmath>
#include <string>

namespace kestrine::testing {

namespace {

Bytes drawing(const std::string& attributes, const std::string& content = "") {
    const std::string text =
        "<svg xmlns=\"http://www.w3.org/2000/svg\" " + attributes + ">" + content + "</svg>";
    return {text.begin(), text.end()};
}

using Size = std::pair<std::uint32_t, std::uint32_t>;

Size sizeOf(const Bytes& file) {
    const RowFormat format = decodeSound(svg::codec, file).frame().format;
    return {format.width, format.height};
}

bool isDrawing(const std::string& start) { return svg::isDrawing(bytesOf(start)); }

/// 10 x 10, the right half black.
Bytes halfBlack() {
    return drawing("width=\"10\" height=\"10\"", "<rect x=\"5\" width=\"5\" height=\"10\"/>");
}

/// The alpha samples of the first row.
std::vector<unsigned> alphaOf(const PixelBuffer& pixels) {
    std::vector<unsigned> alpha;
    for (std::uint32_t x = 0; x < pixels.format.width; ++x)
        alpha.push_back(static_cast<unsigned>(sampleAt(pixels, x, 0, 3)));
    return alpha;
}

/// The pixels of a drawing that shows strings or pictures.
PixelBuffer pixelsWithFonts(const Bytes& file) {
    Result<Decoded> decoded = decodeUnseen(svg::codecWithFonts, file);
    EXPECT_TRUE(decoded.ok());
    return decoded ? std::move(decoded->pixels) : PixelBuffer();
}

using Alpha = std::vector<unsigned>;

PixelBuffer scaled(const Bytes& file, const AxisMap& x, const AxisMap& y) {
    const std::shared_ptr<Source> source = *LocalSource::open(readerOfBytes(file));
    return *readPixels({source, 0, {Resampling{x, y, ResampleFilter::lanczos, Light::linear}}});
}

Bytes corpusDrawing(const std::string& name) {
    return readFileBytes(inSourceFolder("fuzz/corpus/svg/" + name));
}

} // namespace

TEST(SVGDecoder, theFirstElementDecidesWhetherAFileIsADrawing) {
    for (const char* start :
         {"<svg ", "<svg>", " \n<svg\n", "\xef\xbb\xbf<svg ", "<svg:svg ", "<?xml version=\"1.0\"?><svg ",
          "<!-- a <html> --><svg ", "<!DOCTYPE svg [<!ENTITY a \"b>\">]><svg ",
          "<!DOCTYPE svg [<!ENTITY a \"]\">] >\n<svg "})
        EXPECT_TRUE(isDrawing(start)) << start;
    for (const char* start :
         {"", "svg", "<html><svg>", "<?xml version=\"1.0\"?><plist>", "<svgx ", "<!-- <svg ", "text <svg>"})
        EXPECT_FALSE(isDrawing(start)) << start;
}

TEST(SVGDecoder, aLongCommentMayStandBeforeTheFirstElement) {
    const std::string comment = "<!--" + std::string(10'000, 'x') + "-->";
    const std::string declaration = "<?xml version=\"1.0\"?>", drawing = "<svg width='3' height='2'/>";
    const auto open = [](const std::string& text) {
        return LocalSource::open(readerOfBytes(Bytes(text.begin(), text.end())));
    };
    EXPECT_TRUE(open(declaration + comment + drawing));
    EXPECT_EQ(open(declaration + comment + "<plist/>").failure().reason, Reason::unsupported);
    EXPECT_EQ(open(comment + "<html/>").failure().reason, Reason::unsupported);
}

TEST(SVGDecoder, aCompressedFileMayBeADrawingUnlessItsNameSaysOtherwise) {
    using namespace std::string_literals;
    EXPECT_TRUE(isDrawing("\x1f\x8b\x08\0\0\0\0\0\0\x03 data"s));
    EXPECT_TRUE(isDrawing("\x1f\x8b\x08\x08\0\0\0\0\0\x03logo.svg\0 data"s));
    EXPECT_FALSE(isDrawing("\x1f\x8b\x08\x08\0\0\0\0\0\x03logo.tar\0 data"s));
    EXPECT_FALSE(isDrawing("\x1f\x8b\x08"s));
}

TEST(SVGDecoder, theNaturalSizeIsThatOfWidthAndHeightElseOfTheViewBox) {
    EXPECT_EQ(sizeOf(drawing("width=\"40\" height=\"30\"")), Size(40, 30));
    EXPECT_EQ(sizeOf(drawing("width=\"40\" height=\"30\" viewBox=\"0 0 7 7\"")), Size(40, 30));
    EXPECT_EQ(sizeOf(drawing("width=\"1in\" height=\"18pt\"")), Size(96, 24));
    EXPECT_EQ(sizeOf(drawing("width=\"25.4mm\" height=\"2.54cm\"")), Size(96, 96));
    EXPECT_EQ(sizeOf(drawing("viewBox=\"5 5 40 30\"")), Size(40, 30));
    EXPECT_EQ(sizeOf(drawing("width=\"100%\" height=\"100%\" viewBox=\"0 0 40 30\"")), Size(40, 30));
    EXPECT_EQ(sizeOf(drawing("width=\"80\" viewBox=\"0 0 40 30\"")), Size(80, 60));
    EXPECT_EQ(sizeOf(drawing("height=\"15\" viewBox=\"0 0 40 30\"")), Size(20, 15));
    EXPECT_EQ(sizeOf(drawing("", "<rect x=\"4\" y=\"3\" width=\"36\" height=\"27\"/>")), Size(40, 30));
    EXPECT_EQ(sizeOf(drawing("", "<rect x=\"400\" y=\"200\" width=\"36\" height=\"27\"/>")), Size(436, 227));
}

TEST(SVGDecoder, theNaturalSizeIsInWholePixelsAndAtLeastOne) {
    EXPECT_EQ(sizeOf(drawing("width=\"40.4\" height=\"29.5\"")), Size(40, 30));
    EXPECT_EQ(sizeOf(drawing("width=\"0.1\" height=\"0.2\"")), Size(1, 1));
    EXPECT_EQ(sizeOf(drawing("")), Size(1, 1));
    const Result<Decoded> large = decode(svg::codec, drawing("width=\"100000\" height=\"100000\""));
    ASSERT_FALSE(large.ok());
    EXPECT_EQ(large.failure().reason, Reason::tooLarge);
}

TEST(SVGDecoder, aDrawingIsTransparentWhereNothingIsDrawn) {
    const Decoded decoded = decodeSound(svg::codec, halfBlack());
    EXPECT_EQ(alphaOf(decoded.pixels), (Alpha{0, 0, 0, 0, 0, 255, 255, 255, 255, 255}));
    EXPECT_EQ(decoded.contents, FileContents{FileContents::Kind::drawing});
    EXPECT_FALSE(decoded.frame().profile.has_value());
    EXPECT_EQ(decoded.frame().resolution, Resolution{});
}

TEST(SVGDecoder, colorsAreNotMultipliedByAlpha) {
    const Bytes file = drawing("width=\"1\" height=\"1\"",
                               "<rect width=\"1\" height=\"1\" fill=\"#ff8000\" fill-opacity=\"0.5\"/>");
    const PixelBuffer pixels = decodeSound(svg::codec, file).pixels;
    EXPECT_EQ(sampleAt(pixels, 0, 0, 0), 255u);
    EXPECT_NEAR(static_cast<double>(sampleAt(pixels, 0, 0, 1)), 128, 1);
    EXPECT_NEAR(static_cast<double>(sampleAt(pixels, 0, 0, 3)), 128, 1);
}

TEST(SVGDecoder, anEnlargedDrawingIsSharp) {
    const AxisMap x = AxisMap::filling(10, 1000), y = AxisMap::filling(10, 3);
    Alpha expected(1000, 0);
    std::fill(expected.begin() + 500, expected.end(), 255);
    EXPECT_EQ(alphaOf(scaled(halfBlack(), x, y)), expected);
}

TEST(SVGDecoder, theMapSaysWhereThePixelsLie) {
    const AxisMap y = AxisMap::filling(10, 2);
    EXPECT_EQ(alphaOf(scaled(halfBlack(), {1, 3, 4}, y)), (Alpha{0, 0, 255, 255}));
    const Alpha covered =
        alphaOf(scaled(halfBlack(), {0.4, 0, 4}, y)); // the edge is within the pixel [5, 7.5)
    EXPECT_EQ(covered, (Alpha{0, 0, 255, 255}));
    const Alpha half = alphaOf(scaled(halfBlack(), {0.5, 2, 3}, y)); // [2, 4), [4, 6), [6, 8)
    EXPECT_EQ(half[0], 0u);
    EXPECT_NEAR(half[1], 128, 2);
    EXPECT_EQ(half[2], 255u);
}

TEST(SVGDecoder, aTurnedDrawingIsSharpAsWell) {
    const std::shared_ptr<Source> source = *LocalSource::open(readerOfBytes(halfBlack()));
    const Resampling enlarge{AxisMap::filling(10, 10), AxisMap::filling(10, 100), ResampleFilter::lanczos,
                             Light::linear};
    const PixelBuffer pixels = *readPixels({source, 0, {QuarterTurn::clockwise, enlarge}});
    EXPECT_EQ(sampleAt(pixels, 5, 49, 3), 0u);
    EXPECT_EQ(sampleAt(pixels, 5, 50, 3), 255u);
}

TEST(SVGDecoder, severalSizesOfOneSourceAreSharp) {
    const std::shared_ptr<Source> source = *LocalSource::open(readerOfBytes(halfBlack()));
    source->keepPixels();
    for (const std::uint32_t width : {100u, 200u}) {
        const Resampling enlarge{AxisMap::filling(10, width), AxisMap::filling(10, 1),
                                 ResampleFilter::lanczos, Light::linear};
        const Alpha alpha = alphaOf(*readPixels({source, 0, {enlarge}}));
        EXPECT_EQ(alpha[width / 2 - 1], 0u);
        EXPECT_EQ(alpha[width / 2], 255u);
    }
}

TEST(SVGDecoder, bandsAndTilesFitTogether) {
    const Bytes file = drawing("width=\"100\" height=\"1\"", "<path d=\"M0 0L100 0L100 1z\"/>");
    const AxisMap x = AxisMap::filling(100, 40'000), y = AxisMap::filling(1, 400);
    const PixelBuffer pixels = scaled(file, x, y);
    for (const std::uint32_t column : {100u, 16'383u, 16'384u, 32'767u, 32'768u, 39'900u})
        for (const std::uint32_t row : {0u, 255u, 256u, 399u}) {
            const double edge = 400.0 * column / 40'000;
            if (std::abs(edge - row) > 2) {
                EXPECT_EQ(sampleAt(pixels, column, row, 3), row < edge ? 255u : 0u) << column << " " << row;
            }
        }
}

TEST(SVGDecoder, aCompressedDrawingIsTheSame) {
    const Decoded plain = decodeSound(svg::codec, corpusDrawing("shapes.svg"));
    const Decoded compressed = decodeSound(svg::codec, corpusDrawing("compressed.svgz"));
    EXPECT_TRUE(samePicture(compressed.pixels, plain.pixels));
    Bytes cut = corpusDrawing("compressed.svgz");
    cut.resize(cut.size() - 20);
    const Result<Decoded> truncated = decode(svg::codec, cut);
    ASSERT_FALSE(truncated.ok());
    EXPECT_EQ(truncated.failure().reason, Reason::truncated);
}

TEST(SVGDecoder, textsAreDrawnInEveryFamily) {
    for (const char* family : {"sans-serif", "serif", "monospace", "Times New Roman", "No Such Family"}) {
        const Bytes file = drawing("width=\"40\" height=\"20\"",
                                   std::string("<text y=\"16\" font-family=\"") + family + "\">Hxg</text>");
        std::uint64_t ink = 0;
        const PixelBuffer pixels = pixelsWithFonts(file);
        for (std::size_t i = 3; i < pixels.bytes.size(); i += 4)
            ink += pixels.bytes[i];
        EXPECT_GT(ink, 5000u) << family;
    }
}

TEST(SVGDecoder, onlyDrawingsWithStringsPicturesOrEntitiesWaitForFonts) {
    const std::string size = "xmlns:s=\"http://www.w3.org/2000/svg\" width=\"9\" height=\"9\"";
    for (const char* content :
         {"<text>a</text>", "<s:text>a</s:text>", "<image/>", "<s:image/>", "<filter><feImage/></filter>"}) {
        const Result<Decoded> decoded = decode(svg::codec, drawing(size, content));
        ASSERT_FALSE(decoded.ok()) << content;
        EXPECT_EQ(decoded.failure().reason, Reason::otherFormat) << content;
    }
    const Bytes shapes = drawing(size, "<rect text-anchor=\"end\" width=\"9\" height=\"9\"/>");
    EXPECT_TRUE(samePicture(decodeSound(svg::codec, shapes).pixels, pixelsWithFonts(shapes)));
    Bytes entity = bytesOf("<!DOCTYPE svg [<!ENTITY e \"&#60;te\">]>");
    entity.insert(entity.end(), shapes.begin(), shapes.end());
    EXPECT_EQ(decode(svg::codec, entity).failure().reason, Reason::otherFormat);
}

TEST(SVGDecoder, otherFilesAreNotShown) {
    const TemporaryFolder folder;
    const Bytes red = drawing("width=\"9\" height=\"9\"", "<rect width=\"9\" height=\"9\" fill=\"red\"/>");
    const std::string path = folder.write("red.svg", ByteView(red));
    for (const std::string& reference : {path, "file://" + path}) {
        const Bytes file = drawing("xmlns:xlink=\"http://www.w3.org/1999/xlink\" width=\"9\" height=\"9\"",
                                   "<image width=\"9\" height=\"9\" xlink:href=\"" + reference
                                       + "\"/><use xlink:href=\"" + reference + "#a\"/>");
        EXPECT_EQ(alphaOf(pixelsWithFonts(file)), Alpha(9, 0)) << reference;
    }
}

TEST(SVGDecoder, damagedTextIsRefused) {
    Bytes file = corpusDrawing("shapes.svg");
    file.resize(file.size() / 2);
    const Result<Decoded> decoded = decode(svg::codec, file);
    ASSERT_FALSE(decoded.ok());
    EXPECT_EQ(decoded.failure().reason, Reason::malformed);
}

TEST(SVGDecoder, aMissingLibraryIsReportedWithItsPackage) {
    const Result<svg::Functions> functions = svg::loadFunctions({"librsvg-2.so.0"});
    ASSERT_FALSE(functions.ok());
    EXPECT_EQ(functions.failure().reason, Reason::unsupported);
    EXPECT_NE(functions.failure().text.find("librsvg2-2"), std::string::npos);
    EXPECT_FALSE(svg::loadFunctions({"libm.so.6"}).ok());
}

} // namespace kestrine::testing
