// From DateTimeOriginal to a file's creation date, in a given time zone.
#include "platform/foundation/FileCreationDate.h"
#include "platform/foundation/LocalTime.h"
#include "platform/host/files/ExtendedAttributes.h"
#include "tests/_MyClasses/ExifReading.h"
#include "tests/_MyClasses/Raised.h"
#include "tests/support/LocalZone.h"
#include "tests/support/SystemFeatures.h"

#include <gtest/gtest.h>

namespace kestrine::testing {
namespace {

constexpr const char* taken = "2008:01:02 10:11:12";

ExifContent takenAt(const ExifField& date, const std::vector<ExifField>& ifd1 = {}) {
    return {.ifd0 = {exifText(0x010f, "Kappa")},
            .exifSubIFD = {date},
            .ifd1 = ifd1,
            .nextOffsetIsLittleEndian = true};
}

ExifContent takenAt(const char* text) { return takenAt(exifText(0x9003, text)); }

ExifContent takenInZone(std::int16_t hours) {
    return takenAt(exifText(0x9003, taken), {exifSignedShorts(0x882a, {hours, 0})});
}

std::string shownDate(const OptionalDate& date) { return date ? isoText(*date) : "nil"; }

std::string creationDate(const ExifContent& content) {
    const ReadFile file(content);
    return shownDate(ExifTagReader::creationDateWithPath(NSString::fromUTF8(file.path())));
}

class ExifCreationDate : public ::testing::Test {
protected:
    const LocalZone zone_{"Asia/Tokyo"};
};

TEST_F(ExifCreationDate, theCreationDateIsTheDateTakenInLocalTime) {
    EXPECT_EQ(creationDate(takenAt(taken)), "2008-01-02T10:11:12+09:00");
    EXPECT_EQ(creationDate(takenInZone(3)), "2008-01-02T10:11:12+09:00") << "without correction";
}

TEST_F(ExifCreationDate, whatIsNoDateGivesNone) {
    for (const char* text : {"", "2008:01:02", "0000:00:00 00:00:00", "    :  :     :  :  ", "yesterday"})
        EXPECT_EQ(creationDate(takenAt(text)), "nil") << text;
    EXPECT_EQ(creationDate({.ifd0 = {exifText(0x010f, "Kappa")}}), "nil");
}

TEST_F(ExifCreationDate, withoutAZoneNineHoursAreTakenAway) {
    EXPECT_EQ(shownDate(ReadFile(takenAt(taken))->correctedCreationDate()), "2008-01-02T01:11:12+09:00");
}

TEST_F(ExifCreationDate, aZoneIsAddedAsItIs) {
    EXPECT_EQ(shownDate(ReadFile(takenInZone(9))->correctedCreationDate()), "2008-01-02T19:11:12+09:00");
    EXPECT_EQ(shownDate(ReadFile(takenInZone(-5))->correctedCreationDate()), "2008-01-02T05:11:12+09:00")
        << "the zone is a signed number of 16 bits";
    EXPECT_EQ(shownDate(ReadFile(takenInZone(0))->correctedCreationDate()), "2008-01-02T10:11:12+09:00");
}

TEST_F(ExifCreationDate, theCorrectionIsASpanOfTimeNotOfClocks) {
    const LocalZone berlin("Europe/Berlin");
    EXPECT_EQ(shownDate(ReadFile(takenAt("2024:03:31 10:00:00"))->correctedCreationDate()),
              "2024-03-31T00:00:00+01:00");
}

TEST_F(ExifCreationDate, aDateWithoutABlankChangesNothing) {
    for (const char* text : {"2008:01:02", "2008:01:02T10:11:12", " 2008:01:02", "2008:01:02 ", ""})
        EXPECT_FALSE(ReadFile(takenAt(text))->correctedCreationDate()) << text;
}

TEST_F(ExifCreationDate, aDateThatIsNoTextRaisesInvalidArgument) {
    for (const ExifField& field : {exifShorts(0x9003, {2008}), exifBytes(0x9003, {'2'})}) {
        EXPECT_EQ(raisedName([&] { (void)creationDate(takenAt(field)); }), "NSInvalidArgumentException");
        EXPECT_EQ(raisedName([&] { ReadFile(takenAt(field))->changeCreationDate(); }),
                  "NSInvalidArgumentException");
    }
    EXPECT_EQ(creationDate(takenAt(exifBytes(0x9003, {}))), "nil") << "empty is as absent";
    const ReadFile textZone(takenAt(exifText(0x9003, taken), {exifText(0x882a, "9")}));
    EXPECT_EQ(raisedName([&] { textZone->changeCreationDate(); }), "NSInvalidArgumentException");
}

class ChangedCreationDate : public ExifCreationDate {
protected:
    void SetUp() override {
        if (!testing::keepsAttributes())
            GTEST_SKIP() << "the temporary folder's file system keeps no extended attributes";
    }

    const TemporaryFolder folder;
};

TEST_F(ChangedCreationDate, theFileGetsTheDateOfThePictureAndKeepsItsOthers) {
    const std::string path = folder.write("photo.jpg", jpegFile(takenAt(taken)));
    const auto modified = std::filesystem::last_write_time(path);
    ExifTagReader::changeCreationDateWithPath(NSString::fromUTF8(path));
    EXPECT_EQ(fileCreationDateText(path), "2008-01-02T01:11:12+09:00");
    EXPECT_EQ(std::filesystem::last_write_time(path), modified);
    EXPECT_EQ(readFileBytes(path), jpegFile(takenAt(taken)));
}

TEST_F(ChangedCreationDate, aZoneOf9Gives19OClock) {
    const std::string path = folder.write("photo.jpg", jpegFile(takenInZone(9)));
    ExifTagReader::changeCreationDateWithPath(NSString::fromUTF8(path));
    EXPECT_EQ(fileCreationDateText(path), "2008-01-02T19:11:12+09:00");
}

TEST_F(ChangedCreationDate, aFileNamedPngOrWithoutADateIsNotChanged) {
    const std::string png = folder.write("photo.png", jpegFile(takenAt(taken)));
    const std::string dateless = folder.write("photo.jpg", jpegFile(takenAt("soon")));
    for (const std::string& path : {png, dateless}) {
        ExifTagReader::changeCreationDateWithPath(NSString::fromUTF8(path));
        EXPECT_EQ(fileCreationDateText(path), std::nullopt) << path;
    }
    EXPECT_EQ(shownDate(ExifTagReader::creationDateWithPath(NSString::fromUTF8(png))), "nil");
}

TEST_F(ExifCreationDate, aFileThatIsNotThereIsNoFailure) {
    ExifTagReader::changeCreationDateWithPath(u"/nowhere/photo.jpg");
    EXPECT_EQ(fileCreationDateText("/nowhere/photo.jpg"), std::nullopt);
}

} // namespace
} // namespace kestrine::testing
