// Archived index sets: the layout for writing and all layouts for reading.
#include "platform/foundation/NSIndexSet.h"

#include "platform/foundation/archiving/NSArchiver.h"
#include "tests/platform/foundation/archiving/ArchiveBytes.h"

#include <gtest/gtest.h>

namespace kestrine {
namespace {

using namespace testing;

/// The ranges as text, such as "0+1 2+3", or the text of the failure.
std::string rangesOf(const Bytes& archive) {
    const Result<Object> object = NSUnarchiver::unarchiveObjectWithData(archive);
    if (!object) {
        return "failed";
    }
    std::string text;
    for (const NSRange& range : dynamic_cast<const NSIndexSet&>(**object).ranges()) {
        text +=
            (text.empty() ? "" : " ") + std::to_string(range.location) + "+" + std::to_string(range.length);
    }
    return text;
}

/// Shared strings: 0 "@", 1 and 2 the class names, then from 3 on; objects: 0 the set, 1 and 2 the classes.
Bytes setOf(const std::string& groups, std::string_view name = "NSIndexSet") {
    return archiveOf("84" + newClass(name) + newRootClass() + groups + "86");
}

std::string written(std::vector<NSRange> ranges) {
    const auto set = std::make_shared<NSIndexSet>(std::move(ranges));
    const auto data = NSArchiver::archivedDataWithRootObject(set);
    return data ? toHex((*data)->bytes()) : "failed";
}

std::string data(const std::string& block, const std::string& length) {
    return "92 84" + newClass("NSData") + "94" + newType("i") + length
           + newType("[" + length.substr(1) + "c]") + block + "86";
}

TEST(IndexSetArchive, theStoredSelectionsAreRead) {
    EXPECT_EQ(rangesOf(fromHex(oneIndex)), "2+1");
    EXPECT_EQ(rangesOf(fromHex(twoRanges)), "0+1 2+3");
    EXPECT_EQ(rangesOf(fromHex(noIndexes)), "");
}

TEST(IndexSetArchive, setsAreWrittenByteForByteAsThePlatformDoes) {
    EXPECT_EQ(written({{2, 1}}), oneIndex);
    EXPECT_EQ(written({{2, 3}, {0, 1}}), twoRanges);
    EXPECT_EQ(written({}), noIndexes);
}

TEST(IndexSetArchive, indexesAbove32BitsAreNotWritten) {
    EXPECT_NE(written({{4294967295, 4294967295}}), "failed");
    EXPECT_EQ(written({{4294967296, 1}}), "failed");
    EXPECT_EQ(written({{0, 4294967296}}), "failed");
}

TEST(IndexSetArchive, everyPlausibleLayoutIsRead) {
    const std::pair<std::string, std::string_view> rows[] = {
        {"", ""},
        {newType("i") + "00", ""},
        {newType("I") + "02 95 05 95 01 95 00 95 02", "0+2 5+1"},
        {newType("I") + "02 95 00 95 03 95 02 95 04", "0+6"},
        {newType("I") + "02 95 00 95 03 95 03 95 04", "0+7"},
        {newType("I") + "01 95 07 95 00", ""},
        {newType("I") + "01" + newType("II") + "02 03", "2+3"},
        {newType("III") + "01 02 03", "2+3"},
        {newType("Q") + "02" + newType("[2{_NSRange=QQ}]") + "00 01 02 03", "0+1 2+3"},
        {newType("L") + "01" + newType("{_NSRange=LL}") + "02 03", "2+3"},
        {newType("cCBsSiIlL") + "04 00 01 02 01 04 01 06 01", "0+1 2+1 4+1 6+1"},
        {newType("q") + "01 95 02 95 03", "2+3"},
        {newType("I") + "01 95 ff 95 ff", "4294967295+4294967295"},
        {newType("Q") + "01 95 05 95 ff", "5+9223372036854775802"},
        {newType("Q") + "01 95 ff 95 ff", ""},
        {newType("I") + "01" + newType("[2c]") + "02 03", "2+3"},
        {newType("I") + "02" + newType("[4C]") + "00 01 02 03", "0+1 2+3"},
        {newType("I") + "01" + newType("+") + "03 02 81 01", "2+129"},
        {newType("+") + "04 00 01 02 03", "0+1 2+3"},
        {newType("+") + "00", ""},
        {newType("I") + "00" + newType("[0c]"), ""},
        {newType("I") + "01" + data("0203", "02"), "2+3"},
        {data("0203", "02"), "2+3"},
        {newType("+") + "0b 00 ffffffffffffffffff 01", "0+9223372036854775807"},
    };
    for (const auto& [groups, ranges] : rows) {
        EXPECT_EQ(rangesOf(setOf(groups)), ranges) << groups;
    }
}

TEST(IndexSetArchive, theMutableClassAndAnyVersionAreRead) {
    const std::string groups = newType("I") + "01 96 02 96 01";
    EXPECT_EQ(rangesOf(archiveOf("84" + newClass("NSMutableIndexSet") + newClass("NSIndexSet", "07")
                                 + newRootClass() + groups + "86")),
              "2+1");
}

TEST(IndexSetArchive, everyOtherLayoutFails) {
    const std::string groups[] = {
        newType("I") + "01",
        newType("I") + "01 95 02",
        newType("I") + "01 95 02 95 03 95 04",
        newType("I") + "02 95 02 95 03",
        newType("I") + "00 95 02 95 03",
        newType("i") + "ff",
        newType("i") + "01 95 ff 95 01",
        newType("i") + "01 95 01 95 ff",
        newType("q") + "01 95 01 95 ff",
        newType("f") + "01",
        newType("I") + "01 95 02" + newType("f") + "03",
        newType("I") + "01" + newType("+") + "02 02 03 95 05 95 06",
        newType("I") + "02" + newType("+") + "02 02 03",
        newType("I") + "01" + newType("+") + "01 02",
        newType("I") + "01" + newType("+") + "02 02 83",
        newType("+") + "03 02 03 80",
        newType("+") + "01 02",
        newType("+") + "02 02 03 95 02 02 03",
        newType("+") + "85",
        newType("+") + "0b 00 ffffffffffffffffff 02",
        newType("+") + "0c 00 80808080808080808080 00",
        newType("I") + "01 92 85",
        newType("I") + "01 92 92",
        newType("I") + "00 92 84" + newClass("NSNull") + "94 86",
        newType("I") + "01" + newType("#") + "93",
        newType("*") + "84" + newType("I"),
        newType(":") + "93",
    };
    for (const std::string& each : groups) {
        EXPECT_EQ(rangesOf(setOf(each)), "failed") << each;
    }
}

} // namespace
} // namespace kestrine
