// The EXIF that is carried from a source into an output, compared with blocks that the builder makes.
#include "platform/imageio/exif/CarriedExif.h"
#include "platform/imageio/exif/ExifFacts.h"
#include "tests/support/ExifBuilder.h"

#include <gtest/gtest.h>

namespace kestrine::testing {
namespace {

constexpr std::size_t largestBlock = 65527;

constexpr std::uint16_t make = 0x010f, orientation = 0x0112, xResolution = 0x011a, yResolution = 0x011b,
                        resolutionUnit = 0x0128, software = 0x0131, copyrightTag = 0x8298,
                        exposureTime = 0x829a, makerNote = 0x927c, userComment = 0x9286, colorSpace = 0xa001,
                        pixelX = 0xa002, pixelY = 0xa003, lensModel = 0xa434;

/// The Exif directory of an output of 1200 x 800 pixels, with `fields` before the size.
std::vector<ExifField> exifWith(std::vector<ExifField> fields) {
    fields.push_back(exifLongs(pixelX, {1200}));
    fields.push_back(exifLongs(pixelY, {800}));
    return fields;
}

Bytes carried(const ExifContent& source, bool turned = false) {
    return carriedExif(exifBlock(source), {1200, 800, turned});
}

constexpr ExifOrder bothOrders[]{ExifOrder::bigEndian, ExifOrder::littleEndian};

TEST(CarriedExif, valuesOfEveryTypeBecomeBigEndian) {
    const std::vector<ExifField> main{exifText(make, "Kappa"), exifShorts(orientation, {3})};
    const std::vector<ExifField> exif{
        exifRationals(exposureTime, {1, 125}),
        exifBytes(0x9000, {'0', '2', '3', '1'}),
        exifSignedRationals(0x9204, {-1, 3}),
        exifShorts(0x9214, {1, 2, 3, 4}),
        exifBytes(userComment, {'A', 'S', 'C', 'I', 'I', 0, 0, 0, 'x'}),
        exifSignedShorts(0x9990, {-2, 3}),
        exifLongs(0x9991, {0x01020304, 5}),
        exifSignedLongs(0x9992, {-7}),
        exifFloats(0x9993, {0.5f, -2.f}),
        exifDoubles(0x9994, {0.1}),
        exifBytes(0x9995, {1, 2, 3, 4, 5}, 1),
        exifBytes(0x9996, {1, 2}, 6),
    };
    for (const ExifOrder order : bothOrders)
        EXPECT_EQ(carried({.order = order, .ifd0 = main, .exifSubIFD = exif}),
                  exifBlock({.ifd0 = main, .exifSubIFD = exifWith(exif)}));
}

TEST(CarriedExif, aSelectionKeepsMoreOrLessOfIt) {
    const ExifField artist = exifText(0x013b, "Ann"), owner = exifText(copyrightTag, "(c) Ann"),
                    name = exifText(make, "Kappa"), comment = exifText(0x9c9c, "XP"),
                    serial = exifText(0xa431, "12345"), lens = exifText(lensModel, "50 mm"),
                    north = exifText(1, "N"), turned = exifShorts(orientation, {6});
    const auto kept = [&](ExifSelection selection, ExifOrder order) {
        return carriedExif(exifBlock({.order = order,
                                      .ifd0 = {name, turned, artist, owner, comment},
                                      .exifSubIFD = {serial, lens},
                                      .gpsIFD = {north}}),
                           {1200, 800}, selection);
    };
    const std::vector<ExifField> usual{name, turned, artist, owner};
    for (const ExifOrder order : bothOrders) {
        EXPECT_EQ(
            kept(ExifSelection::camera, order),
            exifBlock({.ifd0 = usual,
                       .exifSubIFD = {exifLongs(pixelX, {1200}), exifLongs(pixelY, {800}), serial, lens}}));
        EXPECT_EQ(kept(ExifSelection::withoutOwner, order),
                  exifBlock({.ifd0 = usual,
                             .exifSubIFD = {exifLongs(pixelX, {1200}), exifLongs(pixelY, {800}), lens}}));
        EXPECT_EQ(kept(ExifSelection::rights, order), exifBlock({.ifd0 = {turned, artist, owner}}));
        const Bytes all = kept(ExifSelection::all, order);
        EXPECT_EQ(carriedExif(all, {1200, 800}, ExifSelection::all), all);
        EXPECT_GT(all.size(), kept(ExifSelection::camera, order).size() + 20);
    }
}

TEST(CarriedExif, rightsOfAFileWithoutAnyAreNothing) {
    const Bytes block = exifBlock({.ifd0 = {exifText(make, "Kappa")}});
    EXPECT_EQ(carriedExif(block, {1, 1}, ExifSelection::rights), Bytes{});
}

TEST(CarriedExif, eightTagsOfTheMainDirectoryAreCarried) {
    const std::vector<ExifField> kept{
        exifText(0x010e, "description"), exifText(make, "Kappa"),
        exifText(0x0110, "model"),       exifShorts(orientation, {1}),
        exifText(software, "software"),  exifText(0x0132, "2008:01:02 10:11:12"),
        exifText(0x013b, "artist"),      exifText(copyrightTag, "owner"),
    };
    ExifContent source{.ifd0 = kept, .gpsIFD = {exifText(1, "N")}, .ifd1 = {exifShorts(0x0103, {6})}};
    for (const ExifField& field : {exifRationals(xResolution, {300, 1}), exifRationals(yResolution, {300, 1}),
                                   exifShorts(resolutionUnit, {2}), exifShorts(0x0213, {1}),
                                   exifBytes(0xc4a5, Bytes(20)), exifText(0x013c, "host")})
        source.ifd0.push_back(field);
    EXPECT_EQ(carried(source), exifBlock({.ifd0 = kept, .exifSubIFD = exifWith({})}));
}

TEST(CarriedExif, makerNotesAndOffsetsIntoTheSourceAreLeftOut) {
    ExifContent source{.ifd0 = {exifText(make, "Kappa")}, .exifSubIFD = {exifShorts(0x8827, {100})}};
    for (const std::uint16_t tag :
         std::initializer_list<std::uint16_t>{0x0111, 0x014a, 0x0201, 0x8769, 0x8825, 0xea1d})
        source.exifSubIFD.push_back(exifLongs(tag, {8}));
    source.exifSubIFD.push_back(exifBytes(makerNote, Bytes(100)));
    source.exifSubIFD.push_back({0x9999, 13, 1, {0, 0, 0, 8}});
    EXPECT_EQ(carried(source), exifBlock({.ifd0 = {exifText(make, "Kappa")},
                                          .exifSubIFD = exifWith({exifShorts(0x8827, {100})})}));
}

TEST(CarriedExif, interoperabilityIsCarried) {
    const std::vector<ExifField> interoperability{exifText(1, "R98"), exifBytes(2, {'0', '1', '0', '0'})};
    for (const ExifOrder order : bothOrders)
        EXPECT_EQ(carried({.order = order,
                           .exifSubIFD = {exifShorts(colorSpace, {1})},
                           .interoperabilityIFD = interoperability}),
                  exifBlock({.exifSubIFD = exifWith({exifShorts(colorSpace, {1})}),
                             .interoperabilityIFD = interoperability}));
}

TEST(CarriedExif, theSizeIsThatOfTheOutput) {
    const ExifContent source{.exifSubIFD = {exifShorts(pixelX, {4000}), exifShorts(pixelY, {3000})}};
    EXPECT_EQ(carried(source), exifBlock({.exifSubIFD = exifWith({})}));
}

TEST(CarriedExif, orientationIs1AfterTurningAndOtherwiseUnchanged) {
    const ExifContent source{.ifd0 = {exifShorts(orientation, {6})}};
    EXPECT_EQ(carried(source, true),
              exifBlock({.ifd0 = {exifShorts(orientation, {1})}, .exifSubIFD = exifWith({})}));
    EXPECT_EQ(carried(source, false),
              exifBlock({.ifd0 = {exifShorts(orientation, {6})}, .exifSubIFD = exifWith({})}));
}

TEST(CarriedExif, anAbsentOrientationStaysAbsentUnlessTurned) {
    const ExifContent source{.ifd0 = {exifText(make, "Kappa")}};
    EXPECT_EQ(carried(source, false),
              exifBlock({.ifd0 = {exifText(make, "Kappa")}, .exifSubIFD = exifWith({})}));
    EXPECT_EQ(carried(source, true),
              exifBlock({.ifd0 = {exifText(make, "Kappa"), exifShorts(orientation, {1})},
                         .exifSubIFD = exifWith({})}));
}

TEST(CarriedExif, entriesAreSortedAndOfDuplicatesTheLastIsCarried) {
    const ExifContent source{
        .ifd0 = {exifText(software, "b"), exifText(make, "old"), exifText(make, "new")},
        .exifSubIFD = {exifText(lensModel, "lens"), exifRationals(exposureTime, {1, 2})}};
    const std::vector<ExifField> exif{exifRationals(exposureTime, {1, 2}), exifLongs(pixelX, {1200}),
                                      exifLongs(pixelY, {800}), exifText(lensModel, "lens")};
    EXPECT_EQ(carried(source),
              exifBlock({.ifd0 = {exifText(make, "new"), exifText(software, "b")}, .exifSubIFD = exif}));
}

TEST(CarriedExif, unreadableEntriesAreLeftOut) {
    const Bytes farAway{0x7f, 0xff, 0xff, 0xff};
    const ExifContent source{.ifd0 = {{0x010e, 2, 9, farAway}, // beyond the end
                                      exifText(make, "Kappa"),
                                      {0x0110, 5, 0xffffffff, {0, 0, 0, 8}}, // a size beyond 32 bits
                                      {software, 99, 1, {0, 0, 0, 8}},       // an unknown type
                                      {0x013b, 2, 0, {}}}};                  // no values
    EXPECT_EQ(carried(source), exifBlock({.ifd0 = {exifText(make, "Kappa")}, .exifSubIFD = exifWith({})}));
}

TEST(CarriedExif, theLargestValuesAreLeftOutUntilTheRestFitsASegment) {
    const ExifContent source{
        .ifd0 = {exifText(0x010e, std::string(30'000, 'd')), exifText(make, "Kappa")},
        .exifSubIFD = {exifBytes(userComment, Bytes(34'000, 1)), exifBytes(0xa302, Bytes(20'000, 2))}};
    std::vector<ExifField> exif = exifWith({});
    exif.push_back(exifBytes(0xa302, Bytes(20'000, 2)));
    EXPECT_EQ(carried(source), exifBlock({.ifd0 = source.ifd0, .exifSubIFD = exif}));
}

TEST(CarriedExif, aBlockMayFillTheSegmentToItsLastByte) {
    // Header, a directory of one entry and one of three, and the value.
    constexpr std::size_t frame = 8 + (2 + 12 + 4) + (2 + 3 * 12 + 4);
    const auto sizeWith = [](std::size_t valueSize) {
        return carried({.exifSubIFD = {exifBytes(userComment, Bytes(valueSize, 1))}}).size();
    };
    EXPECT_EQ(sizeWith(largestBlock - 1 - frame), largestBlock - 1); // values are padded to even sizes
    EXPECT_EQ(sizeWith(largestBlock - frame), frame - 12);
    EXPECT_EQ(sizeWith(100'000), frame - 12);
}

TEST(CarriedExif, noDirectoryHasMoreEntriesThanOurReaderAccepts) {
    ExifContent source;
    for (std::uint16_t i = 0; i < 1000; ++i)
        source.exifSubIFD.push_back(exifShorts(static_cast<std::uint16_t>(0x9300 + i), {i}));
    const Bytes block = carried(source);
    constexpr std::size_t exifAt = 8 + 2 + 12 + 4;
    EXPECT_EQ(block[exifAt] << 8 | block[exifAt + 1], 296 + 2);
}

TEST(CarriedExif, aSourceWithNothingToCarryGivesNoBlock) {
    EXPECT_EQ(carried({}), Bytes{});
    EXPECT_EQ(carried({.ifd0 = {exifRationals(xResolution, {72, 1})}, .gpsIFD = {exifText(1, "N")}}, true),
              Bytes{});
    EXPECT_EQ(carriedExif({}, {1, 1, true}), Bytes{});
    EXPECT_EQ(carriedExif(Bytes{'M', 'M', 0, 42, 0, 0, 0}, {1, 1, true}), Bytes{});
    EXPECT_EQ(carriedExif(Bytes{'M', 'M', 0, 42, 0xff, 0xff, 0xff, 0xff}, {1, 1, true}), Bytes{});
    for (const auto& [position, byte] : {std::pair{0, 'X'}, {1, 'I'}, {3, '+'}, {2, '*'}}) {
        Bytes broken = exifBlock({.ifd0 = {exifText(make, "Kappa")}});
        broken[position] = static_cast<std::uint8_t>(byte);
        EXPECT_EQ(carriedExif(broken, {1, 1}), Bytes{}) << position;
    }
}

TEST(CarriedExif, aDirectoryThatPointsToItselfCausesNoLoop) {
    const ExifContent source{
        .ifd0 = {exifText(make, "Kappa"), exifLongs(0x8769, {8}), exifLongs(0xa005, {8})}};
    const std::vector<ExifField> again{exifText(make, "Kappa")};
    EXPECT_EQ(carried(source),
              exifBlock({.ifd0 = again, .exifSubIFD = exifWith(again), .interoperabilityIFD = again}));
}

TEST(CarriedExif, carryingACarriedBlockChangesNothing) {
    const Bytes once =
        carried({.order = ExifOrder::littleEndian,
                 .ifd0 = {exifText(make, "Kappa"), exifShorts(orientation, {6})},
                 .exifSubIFD = {exifBytes(makerNote, Bytes(50)), exifText(lensModel, "a lens")},
                 .interoperabilityIFD = {exifText(1, "R98")}});
    EXPECT_EQ(carriedExif(once, {1200, 800}), once);
}

TEST(CarriedExif, anyShortenedSourceGivesABlockThatCanBeCarriedAgain) {
    for (const ExifOrder order : bothOrders) {
        const Bytes whole = exifBlock({.order = order,
                                       .ifd0 = {exifText(make, "Kappa"), exifShorts(orientation, {6})},
                                       .exifSubIFD = {exifRationals(exposureTime, {1, 2})},
                                       .interoperabilityIFD = {exifText(1, "R98")}});
        for (std::size_t size = 0; size < whole.size(); ++size) {
            const Bytes block = carriedExif(ByteView(whole).first(size), {3, 2});
            EXPECT_EQ(carriedExif(block, {3, 2}), block) << size;
            (void)readExifFacts(ByteView(whole).first(size));
        }
    }
}

// Facts

TEST(CarriedExif, withoutASizeTheOneThatIsStatedStays) {
    const ExifContent source{.exifSubIFD = {exifLongs(pixelX, {96}), exifLongs(pixelY, {64})}};
    EXPECT_EQ(carriedExif(exifBlock(source), {}, ExifSelection::all), exifBlock(source));
}

TEST(CarriedExif, rightsKeepAnOrientationThatMatters) {
    const auto rights = [](std::uint16_t stated, bool turned) {
        const Bytes block = exifBlock({.ifd0 = {exifText(make, "Kappa"), exifShorts(orientation, {stated})}});
        return carriedExif(block, {1, 1, turned}, ExifSelection::rights);
    };
    EXPECT_EQ(rights(6, false), exifBlock({.ifd0 = {exifShorts(orientation, {6})}}));
    EXPECT_EQ(rights(1, false), Bytes{});
    EXPECT_EQ(rights(6, true), Bytes{});
}

TEST(CarriedExif, numbersInValuesOfNoTypeBecomeBigEndianToo) {
    for (const ExifOrder order : bothOrders) {
        const bool isBig = order == ExifOrder::bigEndian;
        const auto comment = [](std::uint8_t high, std::uint8_t low) {
            return exifBytes(userComment, {'U', 'N', 'I', 'C', 'O', 'D', 'E', 0, high, low, high, low});
        };
        const auto pattern = [](std::uint8_t high, std::uint8_t low) {
            return exifBytes(0xa302, {high, low, high, low, 0, 1, 1, 2});
        };
        EXPECT_EQ(carried({.order = order,
                           .exifSubIFD = {isBig ? comment(0, 'x') : comment('x', 0),
                                          isBig ? pattern(0, 2) : pattern(2, 0)}}),
                  exifBlock({.exifSubIFD = {comment(0, 'x'), exifLongs(pixelX, {1200}),
                                            exifLongs(pixelY, {800}), pattern(0, 2)}}));
    }
}

TEST(CarriedExif, textOfTheNewerTypeIsCarried) {
    const ExifField text{0x010e, 129, 3, {'h', 'i', 0}};
    EXPECT_EQ(carried({.order = ExifOrder::littleEndian, .ifd0 = {text}}),
              exifBlock({.ifd0 = {text}, .exifSubIFD = exifWith({})}));
}

TEST(CarriedExif, placesInThePictureAreLeftOutWhenItChangesExceptForPresets) {
    const std::vector<ExifField> places{exifShorts(0x9214, {3, 2}), exifRationals(0xa20e, {4000, 1}),
                                        exifRationals(0xa20f, {4000, 1}), exifShorts(0xa210, {2}),
                                        exifShorts(0xa214, {3, 2})};
    const Bytes block = exifBlock({.exifSubIFD = places});
    const Bytes without = exifBlock({.exifSubIFD = exifWith({})});
    const Bytes unchanged = carriedExif(block, {1200, 800}, ExifSelection::all);
    EXPECT_GT(unchanged.size(), without.size());
    for (const ExifResult& result :
         {ExifResult{1200, 800, false, true}, ExifResult{1200, 800, true, false}}) {
        const bool addsOrientation = result.isTurned;
        EXPECT_EQ(carriedExif(block, result, ExifSelection::all),
                  exifBlock({.ifd0 = addsOrientation ? std::vector{exifShorts(orientation, {1})}
                                                     : std::vector<ExifField>{},
                             .exifSubIFD = exifWith({})}));
    }
    EXPECT_EQ(carriedExif(block, {1200, 800, false, true}, ExifSelection::camera), unchanged);
}

TEST(CarriedExif, afterAConversionToSRGBTheColorSpaceIsSRGB) {
    const Bytes block =
        exifBlock({.exifSubIFD = {exifShorts(colorSpace, {2})}, .interoperabilityIFD = {exifText(1, "R03")}});
    const ExifResult converted{.width = 1200, .height = 800, .isInSRGB = true};
    EXPECT_EQ(carriedExif(block, converted),
              exifBlock({.exifSubIFD = exifWith({exifShorts(colorSpace, {1})})}));
    EXPECT_EQ(carriedExif(exifBlock({.ifd0 = {exifText(make, "K")}}), converted),
              exifBlock({.ifd0 = {exifText(make, "K")}, .exifSubIFD = exifWith({})}));
}

} // namespace
} // namespace kestrine::testing
