// The description, with empty strings tables unless a test sets one.
#include "platform/foundation/NSBundle.h"
#include "tests/_MyClasses/ExifReading.h"
#include "tests/_MyClasses/Raised.h"

#include <gtest/gtest.h>

namespace kestrine::testing {
namespace {

class ExifAccessorDescription : public ::testing::Test {
protected:
    std::string description(const ExifContent& content) {
        const ReadFile file(content);
        return ExifTagReader::tagDescriptionWithPath(NSString::fromUTF8(file.path()), &noTexts).utf8();
    }

    NSBundle noTexts{"", Environment{}};
    const TemporaryFolder folder;
};

TEST_F(ExifAccessorDescription, aMakerAndAnFNumberAreTwoLinesAndThreeBreaks) {
    EXPECT_EQ(
        description({.ifd0 = {exifText(0x010f, "Kappa")}, .exifSubIFD = {exifRationals(0x829d, {28, 10})}}),
        "maker : Kappa\n\nfNumber : f/2.8\n\n\n");
}

TEST_F(ExifAccessorDescription, aPictureWithoutListedTagsIsThreeEmptyLines) {
    EXPECT_EQ(description({.ifd0 = {exifShorts(0x0112, {6})}}), "\n\n\n");
}

TEST_F(ExifAccessorDescription, allEntriesAreInOrder) {
    const ExifContent full{.ifd0 = {exifText(0x010f, "Kappa"), exifText(0x0110, "K 1")},
                           .exifSubIFD = {exifRationals(0x829a, {1, 125}),
                                          exifRationals(0x829d, {28, 10}),
                                          exifShorts(0x8822, {2}),
                                          exifShorts(0x8827, {100}),
                                          exifText(0x9003, "2008:01:02 10:11:12"),
                                          exifText(0x9004, "2009:01:02 10:11:12"),
                                          exifRationals(0x9102, {4, 1}),
                                          exifSignedRationals(0x9201, {7, 1}),
                                          exifRationals(0x9202, {3, 1}),
                                          exifSignedRationals(0x9203, {5, 1}),
                                          exifSignedRationals(0x9204, {1, 3}),
                                          exifRationals(0x9205, {2, 1}),
                                          exifRationals(0x9206, {37, 10}),
                                          exifShorts(0x9207, {5}),
                                          exifShorts(0x9208, {4}),
                                          exifShorts(0x9209, {16}),
                                          exifRationals(0x920a, {50, 1}),
                                          exifShorts(0xa301, {1}),
                                          exifShorts(0xa403, {1}),
                                          exifRationals(0xa404, {3, 2}),
                                          exifShorts(0xa405, {75}),
                                          exifShorts(0xa407, {2}),
                                          exifShorts(0xa408, {1}),
                                          exifShorts(0xa409, {2}),
                                          exifShorts(0xa40a, {0}),
                                          exifShorts(0xa40c, {3})}};
    EXPECT_EQ(description(full),
              "maker : Kappa\ncameraName : K 1\ncompressedBitsPerPixel : 4.0:1\n"
              "dateTimeOriginal : 2008:01:02 10:11:12\n"
              "dateTimeDigitized : 2009:01:02 10:11:12\n\n"
              "fNumber : f/2.8\nshutterSpeed : 1/128 sec\nlensAperture : f/2.8\n"
              "maxAperture : f/2.0\nsubjectDistance : 3.00 m\nfocalLength : 50.00 mm\n"
              "focalLengthIn35mmFilm : 75mm\n\n"
              "exposureMode : exposureMode2\nexposureTime : 1/125 sec\nbrightness : 10.0 EV\n"
              "exposureBias : 0.33 EV\nmeteringMode : meteringMode5\nISOSpeedRatings : 100\n"
              "lightSource : lightSource4\nflash : flash16\n\n"
              "subjectDistanceRange : subjectDistanceRange3\ndigitalZoomRatio : 3/2\n"
              "whiteBalance : whiteBalance1\ngainControl : gainControl2\n"
              "contrast : contrast1\nsaturation : saturation2\nsharpness : sharpness0\n");
}

TEST_F(ExifAccessorDescription, labelsComeFromTheTable) {
    folder.write("English.lproj/ExifTag.strings", "maker = Made_by;");
    NSBundle bundle(folder.path().string(), Environment{});
    const ReadFile file(ExifContent{.ifd0 = {exifText(0x010f, "Kappa")}});
    file->setBundle(&bundle);
    EXPECT_EQ(file->tagDescription(), NSString(u"Made_by : Kappa\n\n\n\n"));
}

TEST_F(ExifAccessorDescription, aMakerThatIsLiterallyNotAvailableIsLeftOut) {
    EXPECT_EQ(description({.ifd0 = {exifText(0x010f, "N/A")}}), "\n\n\n");
    EXPECT_EQ(description({.ifd0 = {exifText(0x010f, "")}}), "maker : \n\n\n\n");
}

TEST_F(ExifAccessorDescription, rawValuesThatAreNotStringsAreShownInThePlatformsFormat) {
    EXPECT_EQ(
        description({.ifd0 = {exifBytes(0x010f, {1, 2, 0xab, 4, 5}), exifSignedShorts(0x0110, {7, -1})}}),
        "maker : <0102ab04 05>\ncameraName : (\n    7,\n    \"-1\"\n)\n\n\n\n");
}

TEST_F(ExifAccessorDescription, numbersWithAPointOrAnExponentAreQuoted) {
    EXPECT_EQ(description({.ifd0 = {exifDoubles(0x010f, {1.5, 1e+20, 2})}}),
              "maker : (\n    \"1.5\",\n    \"1e+20\",\n    2\n)\n\n\n\n");
}

TEST_F(ExifAccessorDescription, exceptionsOfTheAccessorsReachTheCaller) {
    EXPECT_EQ(raisedName([&] { (void)description({.exifSubIFD = {exifText(0x829d, "2.8")}}); }),
              "NSInvalidArgumentException");
    EXPECT_EQ(raisedName([&] { (void)description({.exifSubIFD = {exifShorts(0x829d, {28})}}); }),
              "NSRangeException");
}

TEST_F(ExifAccessorDescription, aFileWithoutExifSaysSoInTheUsersLanguage) {
    folder.write("English.lproj/ExifTag.strings", "\"Exif information is not available\" = None;");
    NSBundle bundle(folder.path().string(), Environment{});
    const NSString path = NSString::fromUTF8(folder.write("photo.jpg", jpegFile({jfifSegment()})));
    EXPECT_EQ(ExifTagReader::tagDescriptionWithPath(path, &noTexts),
              NSString(u"Exif information is not available"));
    EXPECT_EQ(ExifTagReader::tagDescriptionWithPath(path, &bundle), NSString(u"None"));
    EXPECT_EQ(ExifTagReader::tagDictionaryWithPath(path), nullptr);
}

TEST_F(ExifAccessorDescription, aFileNamedPngHasNoReader) {
    const ExifContent content{.ifd0 = {exifText(0x010f, "Kappa")}};
    const NSString path = NSString::fromUTF8(folder.write("photo.png", jpegFile(content)));
    EXPECT_EQ(ExifTagReader::tagDescriptionWithPath(path, &noTexts),
              NSString(u"Exif information is not available"));
    const TagDictionaryPointer tags = ExifTagReader::tagDictionaryWithPath(path);
    ASSERT_NE(tags, nullptr);
    EXPECT_TRUE(tags->empty());
}

TEST_F(ExifAccessorDescription, aFileThatCannotBeOpenedIsThreeEmptyLines) {
    const NSString path = NSString::fromUTF8(folder / "missing.jpg");
    EXPECT_EQ(ExifTagReader::tagDescriptionWithPath(path, &noTexts), NSString(u"\n\n\n"));
}

TEST_F(ExifAccessorDescription, theTagDictionaryOfAFileIsThatOfItsReader) {
    const ReadFile file(ExifContent{.ifd0 = {exifText(0x010f, "Kappa")}});
    EXPECT_EQ(shown(ExifTagReader::tagDictionaryWithPath(NSString::fromUTF8(file.path())), "IFD0", 0x010f),
              "text Kappa");
}

} // namespace
} // namespace kestrine::testing
