// The shipped "ExifTag" tables: every label and every value of EXIF 2.3 has a string in both languages.
#include "platform/foundation/NSBundle.h"
#include "tests/_MyClasses/ExifReading.h"
#include "tests/support/SourceFolder.h"

#include <gtest/gtest.h>

#include <map>

namespace kestrine::testing {
namespace {

constexpr const char* languages[] = {"en_GB.UTF-8", "ja_JP.UTF-8"};

StringsTable shippedTable(std::string_view language) {
    const std::string path = inSourceFolder("share/") + std::string(language) + ".lproj/ExifTag.strings";
    const Result<StringsTable> table = parseStringsTable(readFileBytes(path));
    return table ? *table : StringsTable();
}

/// The standard values of each accessor's tag, by the accessor's key.
const std::map<std::string, std::vector<int>> standardValues{
    {"exposureMode", {0, 1, 2, 3, 4, 5, 6, 7, 8}},
    {"meteringMode", {0, 1, 2, 3, 4, 5, 6, 255}},
    {"lightSource", {0, 1, 2, 3, 4, 9, 10, 11, 12, 13, 14, 15, 16, 17, 18, 19, 20, 21, 22, 23, 24, 255}},
    {"flash", {0x00, 0x01, 0x05, 0x07, 0x09, 0x0d, 0x0f, 0x10, 0x18, 0x19, 0x1d,
               0x1f, 0x20, 0x41, 0x45, 0x47, 0x49, 0x4d, 0x4f, 0x59, 0x5d, 0x5f}},
    {"sceneType", {1}},
    {"whiteBalance", {0, 1}},
    {"gainControl", {0, 1, 2, 3, 4}},
    {"contrast", {0, 1, 2}},
    {"saturation", {0, 1, 2}},
    {"sharpness", {0, 1, 2}},
    {"subjectDistanceRange", {0, 1, 2, 3}},
};

std::vector<std::string> expectedKeys() {
    std::vector<std::string> keys{"maker",
                                  "cameraName",
                                  "dateTimeOriginal",
                                  "dateTimeDigitized",
                                  "Unused",
                                  "Exif information is not available"};
#define FORMATTED(name, valueAccessor, format, valueFormatted) keys.push_back(#name);
#define LOCALIZED(name, valueAccessor, key)                                                                  \
    keys.push_back(#name);                                                                                   \
    for (const int value : standardValues.at(key))                                                           \
        keys.push_back(key + std::to_string(value));
#define COMPUTED(name) keys.push_back(#name);
#include "_MyClasses/Class/ExifTag/ExifAccessorTable.h"
    return keys;
}

TEST(ExifTagStrings, bothLanguagesHaveEveryKeyAndNoOther) {
    for (const char* language : {"English", "Japanese"}) {
        const StringsTable table = shippedTable(language);
        for (const std::string& key : expectedKeys())
            EXPECT_TRUE(table.contains(NSString::fromUTF8(key))) << language << " " << key;
        EXPECT_EQ(table.size(), expectedKeys().size()) << language;
    }
}

TEST(ExifTagStrings, noTwoValuesOfATagHaveTheSameString) {
    for (const char* language : {"English", "Japanese"}) {
        const StringsTable table = shippedTable(language);
        for (const auto& [name, values] : standardValues) {
            std::map<NSString, int> texts;
            for (const int value : values)
                ++texts[table.at(NSString::fromUTF8(name + std::to_string(value)))];
            EXPECT_EQ(texts.size(), values.size()) << language << " " << name;
        }
    }
}

TEST(ExifTagStrings, aPictureIsShownInTheUsersLanguage) {
    const ReadFile file(ExifContent{
        .exifSubIFD = {exifShorts(0x9209, {16}), exifShorts(0x9207, {5}), exifRationals(0xa404, {0, 1})}});
    const char16_t* flashes[] = {u"Did not fire, suppressed", u"非発光、発光禁止"};
    const char16_t* zooms[] = {u"Not used", u"未使用"};
    const char16_t* descriptions[] = {
        u"\n\nMetering : Pattern\nFlash : Did not fire, suppressed\n\nDigital zoom : Not used\n",
        u"\n\n測光方式 : 分割測光\nフラッシュ : 非発光、発光禁止\n\nデジタルズーム : 未使用\n"};
    for (int i = 0; i < 2; ++i) {
        NSBundle bundle(inSourceFolder("share"), Environment{{"LANG", languages[i]}});
        file->setBundle(&bundle);
        EXPECT_EQ(file->flash(), NSString(flashes[i]));
        EXPECT_EQ(file->digitalZoomRatio(), NSString(zooms[i]));
        EXPECT_EQ(file->tagDescription(), NSString(descriptions[i]));
    }
}

TEST(ExifTagStrings, aValueThatIsNotStandardShowsItsKey) {
    NSBundle bundle(inSourceFolder("share"), Environment{});
    const ReadFile file(ExifContent{.exifSubIFD = {exifShorts(0x9207, {77})}});
    file->setBundle(&bundle);
    EXPECT_EQ(file->meteringMode(), NSString(u"meteringMode77"));
}

} // namespace
} // namespace kestrine::testing
