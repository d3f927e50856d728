// Archiving of a class from a higher layer: its table of fields, versions and failures.
#include "tests/platform/foundation/archiving/PresetRecord.h"

#include "platform/foundation/NSCollections.h"
#include "tests/platform/foundation/archiving/ArchiveBytes.h"

#include <cmath>
#include <gtest/gtest.h>

namespace kestrine {
namespace {

using testing::archiveOf;
using testing::fromHex;
using testing::newClass;
using testing::newRootClass;
using testing::newType;
using testing::presetClasses;
using testing::ResizeSet;
using testing::toHex;

/// Null if `data` is not an archive of a preset.
template <class T>
std::shared_ptr<const T> unarchive(const Bytes& data) {
    const Result<Object> object = NSUnarchiver::unarchiveObjectWithData(data, presetClasses);
    return object ? std::dynamic_pointer_cast<const T>(*object) : nullptr;
}

std::shared_ptr<const ResizeSet> setAt(const NSArray& sets, std::size_t index) {
    return std::dynamic_pointer_cast<const ResizeSet>(sets.elements().at(index));
}

ResizeSet webSet() {
    ResizeSet set;
    set.name = NSString(u"Web");
    set.resizeType = 2;
    set.height = set.width = 1200;
    set.ratio = 100;
    set.maxSize = 800;
    set.compression = 62.5;
    set.attachExifData = set.convertResolution = set.autoRotate = set.highQuality = 1;
    return set;
}

ResizeSet thumbSet() {
    ResizeSet set;
    set.name = NSString(u"Thumb 50%");
    set.resizeType = 1;
    set.ratio = 33.3F;
    set.maxSize = 1200;
    set.formatType = 1;
    set.compression = 70;
    set.convertResolution = set.chooseFolder = 1;
    return set;
}

void expectSameFields(const ResizeSet& actual, const ResizeSet& expected) {
    for (const ArchivedField<ResizeSet>& field : ResizeSet::fields) {
        std::visit([&](auto member) { EXPECT_EQ(actual.*member, expected.*member) << field.key; },
                   field.member);
    }
}

/// One preset: the class with `version` (hexadecimal), then `groups`.
Bytes presetOf(const std::string& version, const std::string& groups) {
    return archiveOf("84" + newClass("ResizeSet", version) + newRootClass() + groups + "86");
}

// Shared strings of presetOf(): 0 "@", 1 "ResizeSet", 2 "NSObject", then the types in order.
const std::string upToConvertResolution = "9285" + newType("c") + "01" + newType("i") + "02" + newType("f")
                                          + "03 97 04 97 05 97 06 96 07 97 08 95 09 95 0a";

TEST(PresetArchive, theDesktopApplicationsListIsReadFieldByField) {
    for (const std::string_view hex : {testing::twoPresets, testing::twoPresetsBigEndian}) {
        const auto sets = unarchive<NSArray>(fromHex(hex));
        ASSERT_NE(sets, nullptr);
        ASSERT_EQ(sets->count(), 2u);
        expectSameFields(*setAt(*sets, 0), webSet());
        expectSameFields(*setAt(*sets, 1), thumbSet());
    }
}

TEST(PresetArchive, aListIsWrittenByteForByteAsTheDesktopApplicationDoes) {
    const auto sets = std::make_shared<const NSArray>(std::vector<Object>{
        std::make_shared<const ResizeSet>(webSet()), std::make_shared<const ResizeSet>(thumbSet())});
    NSArchiver archiver(presetClasses);
    archiver.encodeClassName("NSArray", "NSMutableArray");
    const auto data = archiver.archivedData(sets);
    ASSERT_TRUE(data.ok());
    EXPECT_EQ((*data)->length(), 198u);
    EXPECT_EQ(toHex((*data)->bytes()), testing::twoPresets);
}

TEST(PresetArchive, aPresetKeepsAllFieldsInARoundTrip) {
    const auto data =
        NSArchiver::archivedDataWithRootObject(std::make_shared<ResizeSet>(thumbSet()), presetClasses);
    ASSERT_TRUE(data.ok());
    const auto set = unarchive<ResizeSet>((*data)->bytes());
    ASSERT_NE(set, nullptr);
    expectSameFields(*set, thumbSet());
}

struct VersionRow {
    std::string_view version;
    int extraValues;
    int autoRotate, chooseFolder, highQuality;
};

/// The extra values are 5, 6 and 7, which differ from the defaults of fields that are not read.
constexpr VersionRow versionRows[] = {
    {"00", 0, 0, 0, 1}, {"01", 0, 0, 0, 1}, {"02", 1, 5, 0, 1},      {"03", 2, 5, 6, 1}, {"04", 3, 5, 6, 7},
    {"05", 3, 5, 6, 7}, {"ff", 3, 5, 6, 7}, {"81 e803", 3, 5, 6, 7}, {"92", 3, 5, 6, 7},
};

Bytes presetWithExtraValues(std::string_view version, int count) {
    std::string groups = upToConvertResolution;
    for (int i = 0; i < count; ++i) {
        groups += "95 0" + std::to_string(5 + i);
    }
    return presetOf(std::string(version), groups);
}

TEST(PresetArchive, theStoredVersionDeterminesTheFieldsThatAreRead) {
    for (const VersionRow& row : versionRows) {
        const auto set = unarchive<ResizeSet>(presetWithExtraValues(row.version, row.extraValues));
        ASSERT_NE(set, nullptr) << row.version;
        EXPECT_EQ(set->convertResolution, 10) << row.version;
        EXPECT_EQ(set->autoRotate, row.autoRotate) << row.version;
        EXPECT_EQ(set->chooseFolder, row.chooseFolder) << row.version;
        EXPECT_EQ(set->highQuality, row.highQuality) << row.version;
    }
}

TEST(PresetArchive, tooFewOrTooManyValuesFail) {
    for (const VersionRow& row : versionRows) {
        for (int count = 0; count <= 5; ++count) {
            const auto set = unarchive<ResizeSet>(presetWithExtraValues(row.version, count));
            EXPECT_EQ(set != nullptr, count == row.extraValues) << row.version << " with " << count;
        }
    }
    EXPECT_EQ(unarchive<ResizeSet>(presetOf("04", "")), nullptr);
}

TEST(PresetArchive, aNilNameIsReadAsNil) {
    const auto set = unarchive<ResizeSet>(presetWithExtraValues("04", 3));
    ASSERT_NE(set, nullptr);
    EXPECT_FALSE(set->name.has_value());
}

TEST(PresetArchive, valuesOfAnotherWidthOrGroupingAreAccepted) {
    const std::string grouped = "9285" + newType("Bqddddlf")
                                + "01 87 0200000001000000 83 0000000000000840 04 05 06" + " 07 83 00000041"
                                + newType("CI") + "ff 09";
    const auto set = unarchive<ResizeSet>(presetOf("00", grouped));
    ASSERT_NE(set, nullptr);
    EXPECT_EQ(set->replaceFile, 1);
    EXPECT_EQ(set->resizeType, 2);
    EXPECT_EQ(set->height, 3.0F);
    EXPECT_EQ(set->compression, 8.0F);
    EXPECT_EQ(set->attachExifData, -1);
    EXPECT_EQ(set->convertResolution, 9);
}

TEST(PresetArchive, aFloatFieldAcceptsAnyIntegerCode) {
    const std::string groups = "9285" + newType("ciQIcsCfcc") + "00 00 ff ff ff ff ff 02 03 04";
    const auto set = unarchive<ResizeSet>(presetOf("00", groups));
    ASSERT_NE(set, nullptr);
    EXPECT_EQ(set->height, 18446744073709551616.0F);
    EXPECT_EQ(set->width, 4294967296.0F);
    EXPECT_EQ(set->ratio, -1.0F);
    EXPECT_EQ(set->maxSize, -1.0F);
    EXPECT_EQ(set->formatType, 255);
}

TEST(PresetArchive, unusualValuesAreKept) {
    const std::string groups = "9285" + newType("ciffffifcc")
                               + "85 82 ffffff7f 83 0000c07f 83 0000807f 83 000080ff ff 92 83 000000bf 02 ff";
    const auto set = unarchive<ResizeSet>(presetOf("00", groups));
    ASSERT_NE(set, nullptr);
    EXPECT_EQ(set->replaceFile, -123);
    EXPECT_EQ(set->resizeType, 2147483647);
    EXPECT_TRUE(std::isnan(set->height));
    EXPECT_EQ(set->width, HUGE_VALF);
    EXPECT_EQ(set->ratio, -HUGE_VALF);
    EXPECT_EQ(set->formatType, -110);
    EXPECT_EQ(set->compression, -0.5F);
    EXPECT_EQ(set->attachExifData, 2);
    EXPECT_EQ(set->convertResolution, -1);
}

TEST(PresetArchive, aValueOfTheWrongKindFails) {
    const std::string_view legal = "ciffffifcc";
    for (std::size_t field = 0; field < legal.size(); ++field) {
        for (const char wrong : std::string_view("@#*:+")) {
            std::string type(legal);
            std::string values = "00 00 00 00 00 00 00 00 00 00 ";
            type[field] = wrong;
            values.replace(field * 3, 2, "85");
            EXPECT_EQ(unarchive<ResizeSet>(presetOf("00", "9285" + newType(type) + values)), nullptr) << type;
        }
    }
    for (const std::string_view type : {"fiffffifcc", "cfffffifcc", "ciffffffcc", "ciffffifdc"}) {
        const std::string groups = "9285" + newType(type) + "00 00 00 00 00 00 00 00 00 00";
        EXPECT_EQ(unarchive<ResizeSet>(presetOf("00", groups)), nullptr) << type;
    }
}

TEST(PresetArchive, aNameThatIsNotAStringFails) {
    const std::string array = "92 84" + newClass("NSArray") + "94" + newType("i") + "00 86";
    const std::string string = "92 84" + newClass("NSString", "01") + "94" + newType("+") + "01 41 86";
    const std::string rest = newType("ciffffifcc") + "00 00 00 00 00 00 00 00 00 00";
    EXPECT_EQ(unarchive<ResizeSet>(presetOf("00", array + rest)), nullptr);
    EXPECT_EQ(unarchive<ResizeSet>(presetOf("00", newType("i") + "05" + rest)), nullptr);
    const auto set = unarchive<ResizeSet>(presetOf("00", string + rest));
    ASSERT_NE(set, nullptr);
    EXPECT_EQ(set->name, NSString(u"A"));
}

TEST(PresetArchive, aPresetThatOccursTwiceStaysOneObject) {
    const auto set = std::make_shared<const ResizeSet>(webSet());
    const auto list = std::make_shared<const NSArray>(std::vector<Object>{set, set});
    const auto data = NSArchiver::archivedDataWithRootObject(list, presetClasses);
    ASSERT_TRUE(data.ok());
    const auto read = unarchive<NSArray>((*data)->bytes());
    ASSERT_NE(read, nullptr);
    EXPECT_EQ(read->elements()[0], read->elements()[1]);
    expectSameFields(*setAt(*read, 1), webSet());
}

TEST(PresetArchive, presetsMayShareTheirNameObject) {
    ResizeSet first = webSet();
    ResizeSet second = thumbSet();
    second.name = first.name;
    const auto list = std::make_shared<const NSArray>(
        std::vector<Object>{std::make_shared<ResizeSet>(first), std::make_shared<ResizeSet>(second)});
    const auto data = NSArchiver::archivedDataWithRootObject(list, presetClasses);
    ASSERT_TRUE(data.ok());
    const auto read = unarchive<NSArray>((*data)->bytes());
    ASSERT_NE(read, nullptr);
    EXPECT_TRUE(setAt(*read, 0)->name->isSame(*setAt(*read, 1)->name));
}

TEST(PresetArchive, withoutATableRowTheClassIsUnknown) {
    const Result<Object> object = NSUnarchiver::unarchiveObjectWithData(fromHex(testing::twoPresets));
    ASSERT_FALSE(object.ok());
    EXPECT_EQ(object.failure().reason, Reason::unsupported);
    const auto data = NSArchiver::archivedDataWithRootObject(std::make_shared<ResizeSet>());
    ASSERT_FALSE(data.ok());
    EXPECT_EQ(data.failure().reason, Reason::unsupported);
}

/// Records class versions during reading.
struct Inquirer final : NSObject {
    std::size_t own = 0, root = 0, foreign = 0;

    void encodeWithCoder(NSArchiver&) const {}
    static std::shared_ptr<const Inquirer> initWithCoder(NSUnarchiver& coder) {
        auto inquirer = std::make_shared<Inquirer>();
        inquirer->own = coder.versionForClassName("Inquirer");
        inquirer->root = coder.versionForClassName("NSObject");
        inquirer->foreign = coder.versionForClassName("NSString");
        return inquirer;
    }
};

TEST(PresetArchive, theVersionOfEveryStoredClassIsKnown) {
    constexpr ArchivedClass classes[] = {archivedClass<Inquirer>("Inquirer", 7)};
    const auto data = NSArchiver::archivedDataWithRootObject(std::make_shared<Inquirer>(), classes);
    ASSERT_TRUE(data.ok());
    const Result<Object> object = NSUnarchiver::unarchiveObjectWithData((*data)->bytes(), classes);
    ASSERT_TRUE(object.ok());
    const auto& inquirer = dynamic_cast<const Inquirer&>(**object);
    EXPECT_EQ(inquirer.own, 7u);
    EXPECT_EQ(inquirer.root, 0u);
    EXPECT_EQ(inquirer.foreign, NSNotFound);
}

TEST(PresetArchive, aClassStoredTwiceHasTheVersionOfEachObject) {
    // The second preset has its class as a new class with version 0, so it lacks the last three fields.
    const std::string first = "84" + newClass("ResizeSet", "04") + "95" + "9285" + newType("ciffffifccccc")
                              + "00 00 00 00 00 00 00 00 00 00 05 06 07 86";
    const std::string second = "84" + newClass("ResizeSet", "00") + "95" + "9285" + newType("ciffffifcc")
                               + "00 00 00 00 00 00 00 00 00 00 86";
    const Bytes archive = archiveOf("84" + newClass("NSMutableArray") + newClass("NSArray") + newRootClass()
                                    + newType("i") + "02" + "92" + first + "92" + second + "86");
    const auto sets = unarchive<NSArray>(archive);
    ASSERT_NE(sets, nullptr);
    EXPECT_EQ(setAt(*sets, 0)->highQuality, 7);
    EXPECT_EQ(setAt(*sets, 1)->autoRotate, 0);
    EXPECT_EQ(setAt(*sets, 1)->highQuality, 1);
}

} // namespace
} // namespace kestrine
