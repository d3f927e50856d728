#include "platform/imageio/exif/ExifFacts.h"
#include "tests/support/ExifBuilder.h"

#include <gtest/gtest.h>

namespace kestrine::testing {
namespace {

constexpr std::uint16_t make = 0x010f, orientation = 0x0112, xResolution = 0x011a, yResolution = 0x011b,
                        resolutionUnit = 0x0128, colorSpace = 0xa001, pixelX = 0xa002;

constexpr ExifOrder bothOrders[]{ExifOrder::bigEndian, ExifOrder::littleEndian};

TEST(UprightExif, orientationBecomesOneAndEverythingElseStays) {
    for (const ExifOrder order : bothOrders) {
        const auto block = [&](std::uint16_t turned) {
            return exifBlock({.order = order,
                              .ifd0 = {exifText(make, "Kappa"), exifShorts(orientation, {turned})},
                              .exifSubIFD = {exifLongs(pixelX, {7})}});
        };
        EXPECT_EQ(uprightExif(block(6)), block(1));
    }
}

TEST(UprightExif, orientationMayBeLong) {
    for (const ExifOrder order : bothOrders)
        EXPECT_EQ(uprightExif(exifBlock({.order = order, .ifd0 = {exifLongs(orientation, {8})}})),
                  exifBlock({.order = order, .ifd0 = {exifLongs(orientation, {1})}}));
}

TEST(UprightExif, blocksWithoutOrientationStay) {
    const Bytes block = exifBlock({.ifd0 = {exifText(make, "Kappa")}});
    EXPECT_EQ(uprightExif(block), block);
    EXPECT_EQ(uprightExif(Bytes{1, 2, 3}), (Bytes{1, 2, 3}));
}

TEST(ExifFacts, theOrientationIsOneOfEightInBothOrders) {
    for (const ExifOrder order : bothOrders) {
        const auto orientationFor = [order](const ExifField& field) {
            return readExifFacts(exifBlock({.order = order, .ifd0 = {field}})).orientation;
        };
        EXPECT_EQ(orientationFor(exifShorts(orientation, {7})), 7);
        EXPECT_EQ(orientationFor(exifShorts(orientation, {0})), 1);
        EXPECT_EQ(orientationFor(exifShorts(orientation, {9})), 1);
        EXPECT_EQ(orientationFor(exifText(orientation, "6")), 1);
        EXPECT_EQ(orientationFor(exifShorts(0x0100, {6})), 1);
    }
}

TEST(TakenDate, isThatOfTheOriginalOrElseOfTheDigitisation) {
    const auto dateIn = [](std::vector<ExifField> fields) {
        return dateTakenIn(
            exifBlock({.ifd0 = {exifText(0x0132, "2020:01:01 00:00:00")}, .exifSubIFD = std::move(fields)}));
    };
    const ExifField original = exifText(0x9003, "2019:03:04 05:06:07"),
                    scan = exifText(0x9004, "2021:09:09 01:01:01");
    EXPECT_EQ(dateIn({original, scan}), "2019:03:04 05:06:07");
    EXPECT_EQ(dateIn({scan}), "2021:09:09 01:01:01");
    EXPECT_EQ(dateIn({exifText(0x9003, "0000:00:00 00:00:00"), scan}), "2021:09:09 01:01:01");
    for (const char* text :
         {"", "    :  :     :  :  ", "2019:03:04", "2019-03-04 05:06:07", "2019:03:04 05:06:07 "})
        EXPECT_EQ(dateIn({exifText(0x9003, text)}), "") << text;
    EXPECT_EQ(dateIn({}), "");
}

std::optional<Resolution> resolutionIn(const std::vector<ExifField>& main) {
    return readExifFacts(exifBlock({.ifd0 = main})).resolution;
}

TEST(ExifFacts, theResolutionIsInPixelsPerInch) {
    const ExifField x = exifRationals(xResolution, {300, 1}), y = exifRationals(yResolution, {1501, 10});
    EXPECT_EQ(resolutionIn({x, y}), (Resolution{300, 150.1}));
    EXPECT_EQ(resolutionIn({x, y, exifShorts(resolutionUnit, {2})}), (Resolution{300, 150.1}));
    EXPECT_EQ(resolutionIn({exifRationals(xResolution, {100, 1}), exifRationals(yResolution, {50, 1}),
                            exifShorts(resolutionUnit, {3})}),
              (Resolution{254, 127}));
}

TEST(ExifFacts, anAbsentOrImplausibleAxisIs72) {
    EXPECT_EQ(resolutionIn({exifRationals(xResolution, {300, 1})}), (Resolution{300, 72}));
    EXPECT_EQ(resolutionIn({exifRationals(xResolution, {0, 1}), exifRationals(yResolution, {200001, 1})}),
              (Resolution{72, 72}));
}

TEST(ExifFacts, withoutUnitOrNumbersThereIsNoResolution) {
    EXPECT_EQ(resolutionIn({exifRationals(xResolution, {2, 1}), exifShorts(resolutionUnit, {1})}),
              std::nullopt);
    EXPECT_EQ(resolutionIn({exifRationals(xResolution, {72, 0})}), std::nullopt);
    EXPECT_EQ(resolutionIn({exifText(xResolution, "300 dots")}), std::nullopt);
    EXPECT_EQ(resolutionIn({exifText(make, "Kappa")}), std::nullopt);
    EXPECT_EQ(readExifFacts({}).resolution, std::nullopt);
}

TEST(ExifFacts, adobeRGBIsColorSpace2OrUncalibratedWithR03) {
    struct {
        std::uint16_t space;
        const char* index;
        bool isAdobeRGB;
    } const cases[] = {
        {1, "R98", false},     {1, "R03", false},      {2, "R98", true},
        {0xffff, "R03", true}, {0xffff, "R98", false}, {0xffff, "R", false},
    };
    for (const ExifOrder order : bothOrders)
        for (const auto& [space, index, isAdobeRGB] : cases)
            EXPECT_EQ(readExifFacts(exifBlock({.order = order,
                                               .exifSubIFD = {exifShorts(colorSpace, {space})},
                                               .interoperabilityIFD = {exifText(1, index)}}))
                          .isAdobeRGB,
                      isAdobeRGB)
                << space << " " << index;
    EXPECT_FALSE(readExifFacts(exifBlock({.exifSubIFD = {exifShorts(colorSpace, {0xffff})}})).isAdobeRGB);
    EXPECT_FALSE(readExifFacts(exifBlock({.ifd0 = {exifText(make, "Kappa")}})).isAdobeRGB);
}

} // namespace
} // namespace kestrine::testing
