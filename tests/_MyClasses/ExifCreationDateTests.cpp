// From DateTimeOriginal to a file's creation date, in a given time zone.
#include "_MyClasses/Class/ExifTag/FileCreationDate.h"
#include "_MyClasses/Class/ExifTag/LocalTime.h"
#include "platform/host/ExtendedAttributes.h"
#include "tests/_MyClasses/ExifReading.h"
#include "tests/_MyClasses/LocalZone.h"
#include "tests/_MyClasses/Raised.h"

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

/// Skipped where the temporary folder keeps no attributes.
class ChangedCreationDate : public ExifCreationDate {
protected:
    void SetUp() override {
        const std::string probe = folder.write("probe", "");
        const Result<void> set = setExtendedAttribute(probe, "user.kestrine.probe", bytesOf("x"));
        if (!set && set.failure().reason == Reason::unsupported)
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

// The servers' block

Bytes dosBlock(std::string_view text, std::uint8_t version, std::uint8_t flags, std::size_t size) {
    Bytes block(text.begin(), text.end());
    block.resize((block.size() + 2) / 2 * 2);
    block.insert(block.end(), {version, 0, version, 0});
    block.resize((block.size() + 3) / 4 * 4);
    block.push_back(flags);
    block.resize(size, 0x77);
    return block;
}

std::uint64_t numberAt(const Bytes& block, std::size_t position) {
    std::uint64_t number = 0;
    for (std::size_t i = 8; i-- > 0;)
        number = number << 8 | block.at(position + i);
    return number;
}

struct DosCase {
    std::string_view text;
    std::uint8_t version;
    std::size_t size, timePosition, flagsPosition;
};

TEST_F(ChangedCreationDate, theTimeThatServersKeepFollowsInEveryVersionOfTheirBlock) {
    constexpr std::uint64_t expected = (11644473600 + 1199236272ull) * 10000000;
    const DosCase cases[] = {{"", 3, 52, 36, 8},      {"0x20", 3, 56, 40, 12}, {"", 4, 32, 24, 8},
                             {"0x20", 4, 36, 28, 12}, {"", 5, 24, 16, 8},      {"0x20", 5, 28, 20, 12}};
    for (const DosCase& dos : cases) {
        const std::string path = folder.write("photo.jpg", "");
        const Bytes before = dosBlock(dos.text, dos.version, 0x01, dos.size);
        ASSERT_TRUE(setExtendedAttribute(path, dosAttribute, before));
        ASSERT_TRUE(setFileCreationDate(path, std::chrono::sys_seconds(std::chrono::seconds(1199236272))));
        Bytes after = *getExtendedAttribute(path, dosAttribute);
        EXPECT_EQ(numberAt(after, dos.timePosition), expected) << int(dos.version) << dos.text;
        EXPECT_EQ(after.at(dos.flagsPosition), 0x11);
        after.at(dos.flagsPosition) = 0x01;
        std::copy_n(before.begin() + dos.timePosition, 8, after.begin() + dos.timePosition);
        EXPECT_EQ(after, before) << "nothing else is touched";
    }
}

TEST_F(ChangedCreationDate, theOldVersionsHaveNoFlagsForIt) {
    for (const auto& [version, position] : {std::pair{1, 32}, std::pair{2, 36}}) {
        const std::string path = folder.write("photo.jpg", "");
        ASSERT_TRUE(setExtendedAttribute(path, dosAttribute, dosBlock("", std::uint8_t(version), 0x20, 80)));
        ASSERT_TRUE(setFileCreationDate(path, std::chrono::sys_seconds()));
        const Bytes after = *getExtendedAttribute(path, dosAttribute);
        EXPECT_EQ(numberAt(after, std::size_t(position)), 116444736000000000u);
        EXPECT_EQ(after.at(8), 0x20);
    }
}

TEST_F(ChangedCreationDate, aBlockThatIsShortOrUnknownStaysAndADateBefore1601IsNotPutThere) {
    const std::string path = folder.write("photo.jpg", "");
    const auto now = std::chrono::sys_seconds(std::chrono::seconds(1199236272));
    const auto early = std::chrono::sys_seconds(std::chrono::seconds(-11644473601));
    Bytes whole = dosBlock("", 5, 1, 24);
    std::vector<std::pair<Bytes, std::chrono::sys_seconds>> cases{
        {dosBlock("", 6, 1, 99), now}, {dosBlock("", 0, 1, 99), now}, {whole, early}, {bytesOf("0x20"), now}};
    for (std::size_t size = 0; size < whole.size(); ++size)
        cases.emplace_back(Bytes(whole.begin(), whole.begin() + size), now);
    for (const auto& [block, date] : cases) {
        ASSERT_TRUE(setExtendedAttribute(path, dosAttribute, block));
        ASSERT_TRUE(setFileCreationDate(path, date));
        EXPECT_EQ(*getExtendedAttribute(path, dosAttribute), block) << block.size();
    }
}

TEST_F(ChangedCreationDate, withoutAServersBlockNoneIsMade) {
    const std::string path = folder.write("photo.jpg", "");
    ASSERT_TRUE(setFileCreationDate(path, std::chrono::sys_seconds()));
    EXPECT_EQ(getExtendedAttribute(path, dosAttribute).failure().reason, Reason::notFound);
}

} // namespace
} // namespace kestrine::testing
