// Damaged and malicious archives fail with limited time, memory and stack.
#include "platform/foundation/NSCollections.h"
#include "tests/platform/foundation/archiving/ArchiveBytes.h"
#include "tests/platform/foundation/archiving/PresetRecord.h"

#include "platform/foundation/archiving/TypedStreamFormat.h"

#include <gtest/gtest.h>
#include <random>

namespace kestrine {
namespace {

using namespace testing;

Result<Object> unarchive(ByteView bytes) {
    return NSUnarchiver::unarchiveObjectWithData(bytes, presetClasses);
}

/// The reason of the failure; empty if the archive can be read.
std::optional<Reason> failureOf(const Bytes& bytes) {
    const Result<Object> object = unarchive(bytes);
    return object ? std::nullopt : std::optional(object.failure().reason);
}

struct Row {
    std::string_view what;
    std::string hex;
    Reason reason = Reason::malformed;
};

TEST(MalformedArchive, anUnknownHeaderFails) {
    const std::string body = newType("@") + "84" + newClass("NSNull") + newRootClass() + "86";
    EXPECT_EQ(failureOf(fromHex(std::string(littleHeader) + body)), std::nullopt);
    EXPECT_EQ(failureOf(fromHex(std::string(bigHeader) + body)), std::nullopt);
    const Row rows[] = {
        {"no bytes at all", "", Reason::truncated},
        {"signature of ten bytes", "04 0a 73747265616d74797065 81e803" + body},
        {"signature of twelve bytes", "04 0c 73747265616d747970656464 81e803" + body},
        {"another signature", "04 0b 73747265616d7479706565 81e803" + body},
        {"nil signature", "04 85 81e803" + body},
        {"streamer version 3", "03" + std::string(littleHeader.substr(2)) + body, Reason::unsupported},
        {"streamer version 5", "05" + std::string(littleHeader.substr(2)) + body, Reason::unsupported},
        {"system version that is a tag", "04 0b 73747265616d7479706564 84" + body},
        {"keyed archive", hexOf("bplist00") + "d4 01 02 03 04 05 06 07 0a"},
        {"archive as text", hexOf("An archive as text, 00002d88:0000000d:00000001")},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(failureOf(fromHex(row.hex)), row.reason) << row.what;
    }
}

TEST(MalformedArchive, aRootThatIsNotAnObjectFails) {
    const std::string header(littleHeader);
    const Row rows[] = {
        {"no group at all", header, Reason::truncated},
        {"nil type", header + "85"},
        {"type i", header + newType("i") + "05"},
        {"two objects in a group", header + newType("@@") + "85 85"},
        {"root in an array", header + newType("[1@]") + "85"},
        {"nil root", header + newType("@") + "85", Reason::empty},
        {"end of object", header + newType("@") + "86"},
        {"reference to nothing", header + newType("@") + "92"},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(failureOf(fromHex(row.hex)), row.reason) << row.what;
    }
}

TEST(MalformedArchive, invalidReferencesTagsAndTypesFail) {
    // Objects: 0 the root, 1 its class A; strings: 0 "@", 1 "A". The first type of a row is string 2.
    const Row rows[] = {
        {"object reference not yet given out", "92 94"},
        {"object reference far off", "92 82 ffffff7f"},
        {"object reference below all", "92 81 0080"},
        {"object reference of 64 bits", "92 87 ffffffffffffff7f"},
        {"object reference to a class", "92 93"},
        {"class reference to an object", newType("#") + "92"},
        {"C string reference to a class", newType("*") + "93"},
        {"object reference to a C string", newType("*") + "84 93" + "92 94"},
        {"string reference not yet given out", newType("*") + "84 95"},
        {"type reference not yet given out", "94"},
        {"reserved head 80", newType("i") + "80"},
        {"reserved head 88", newType("i") + "88"},
        {"reserved head 91", newType("i") + "91"},
        {"new in the place of an integer", newType("i") + "84"},
        {"nil in the place of an integer", newType("i") + "85"},
        {"end in the place of an integer", newType("i") + "86"},
        {"raw float in the place of an integer", newType("i") + "83 00007a42"},
        {"nil in the place of a float", newType("f") + "85"},
        {"raw float in the place of an object", "92 83"},
        {"end in the place of an object", "92 86"},
        {"reserved head as type", "80"},
        {"nil type", "85"},
        {"empty type", newType("")},
        {"unbalanced bracket", newType("[3c")},
        {"unknown code", newType("^i")},
        {"name used as a type", "93"},
        {"nil within a new string", "84 85"},
        {"negative length", newType("+") + "ff"},
        {"length beyond the bytes", newType("+") + "82 ffffff7f 41", Reason::truncated},
        {"length of 64 bits", newType("+") + "87 ffffffffffffff7f 41", Reason::truncated},
        {"negative length of a type", "84 ff"},
        {"array beyond the bytes", newType("[2000000000c]") + "41", Reason::truncated},
        {"array of integers beyond the bytes", newType("[2000000000i]") + "41", Reason::malformed},
        {"array count beyond 64 bits", newType("[99999999999999999999c]") + "41"},
        {"C string without text", newType("*") + "84 85"},
        {"object of nil class", "92 84 85 86"},
        {"object of the class that an object is", "92 84 92 86"},
        {"class without a name", newType("#") + "84 85 00 85"},
        {"class that descends from itself", newType("#") + "84" + newType("B") + "00 94"},
        {"class whose superclass descends from it", newType("#") + newClass("B") + newClass("C") + "94"},
        {"class whose superclass is an object", newType("#") + newClass("B") + "92"},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(failureOf(archiveOfValues(row.hex)), row.reason) << row.what;
    }
}

TEST(MalformedArchive, collectionsWithAWrongCountFail) {
    const std::string start = "84" + newClass("NSArray") + newRootClass();
    const std::string null = "92 84" + newClass("NSNull") + "94 86";
    const std::string pair = null + "92 95";
    const Row rows[] = {
        {"no count", start + "86"},
        {"negative count", start + newType("i") + "ff 86"},
        {"fewer elements", start + newType("i") + "03" + pair + "86"},
        {"more elements", start + newType("i") + "01" + pair + "86"},
        {"count without elements", start + newType("i") + "82 ffffff7f 86"},
        {"count that is a float", start + newType("f") + "02" + pair + "86"},
        {"nil element", start + newType("i") + "01 92 85 86"},
        {"element that is a number", start + newType("i") + "01 95 05 86"},
        {"array that holds itself", start + newType("i") + "01 92 92 86"},
        {"array held by its element", start + newType("i") + "01 92 84 93 95 01 92 92 86 86"},
        {"element of an unknown class", start + newType("i") + "01 92 84" + newClass("Other") + "94 86 86",
         Reason::unsupported},
        {"element of the root class", start + newType("i") + "01 92 84 94 86 86", Reason::unsupported},
    };
    EXPECT_EQ(failureOf(archiveOf(start + newType("i") + "02" + pair + "86")), std::nullopt);
    for (const Row& row : rows) {
        EXPECT_EQ(failureOf(archiveOf(row.hex)), row.reason) << row.what;
    }
}

TEST(MalformedArchive, aPresetThatIsItsOwnNameFails) {
    EXPECT_EQ(failureOf(archiveOf("84" + newClass("ResizeSet") + newRootClass() + "92 92"
                                  + newType("ciffffifcc") + "00 00 00 00 00 00 00 00 00 00 86")),
              Reason::malformed);
}

TEST(MalformedArchive, nestingAboveTheLimitFailsSafely) {
    // Strings: 0 "@", 1 "NSArray", 2 "NSObject", 3 "i"; every inner array is of the class that is object 1.
    const auto nested = [](std::size_t depth) {
        std::string text = "84" + newClass("NSArray") + newRootClass() + newType("i");
        for (std::size_t i = 1; i < depth; ++i) {
            text += "019284"
                    "9395";
        }
        text += "00";
        for (std::size_t i = 0; i < depth; ++i) {
            text += "86";
        }
        return archiveOf(text);
    };
    EXPECT_EQ(failureOf(nested(typedstream::depthLimit)), std::nullopt);
    EXPECT_EQ(failureOf(nested(typedstream::depthLimit + 1)), Reason::tooLarge);
    EXPECT_EQ(failureOf(nested(100000)), Reason::tooLarge);
}

TEST(MalformedArchive, bracketsCountAsNesting) {
    // Each object contains the next one inside a hundred brackets.
    std::string type = "@";
    for (int i = 0; i < 100; ++i) {
        type = "[1" + type + "]";
    }
    const std::string inner = "84" + newClass("NSNull") + "85 86";
    EXPECT_EQ(failureOf(archiveOfValues(newType(type) + inner)), Reason::unsupported);
    EXPECT_EQ(failureOf(archiveOfValues(newType(type) + "84 93 94" + inner + "86")), Reason::tooLarge);
}

TEST(MalformedArchive, tooManySuperclassesFail) {
    const auto chain = [](std::size_t length) {
        std::string text = newType("#");
        for (std::size_t i = 0; i < length; ++i) {
            text += "84 93 00";
        }
        return archiveOfValues(text + "85");
    };
    EXPECT_EQ(failureOf(chain(typedstream::depthLimit)), Reason::unsupported)
        << "read, but the class is unknown";
    EXPECT_EQ(failureOf(chain(typedstream::depthLimit + 1)), Reason::tooLarge);
}

TEST(MalformedArchive, anIncompleteArchiveFails) {
    for (const std::string_view hex : {twoPresets, twoPresetsBigEndian, oneIndex, twoRanges, noIndexes}) {
        const Bytes whole = fromHex(hex);
        EXPECT_TRUE(unarchive(whole).ok());
        for (std::size_t length = 0; length < whole.size(); ++length) {
            EXPECT_FALSE(unarchive(ByteView(whole).first(length)).ok()) << length << " of " << hex;
        }
    }
}

/// Changes a few random bytes. Values with a special meaning are more likely.
Bytes damaged(Bytes bytes, std::mt19937& random) {
    const auto below = [&random](std::size_t limit) { return static_cast<std::size_t>(random() % limit); };
    for (std::size_t change = 0, changes = 1 + below(6); change < changes; ++change) {
        const auto place = static_cast<std::ptrdiff_t>(below(bytes.size()));
        const auto value = static_cast<std::uint8_t>(below(3) == 0 ? 0x80 + below(0x20) : below(256));
        switch (below(4)) {
        case 0:
            bytes.insert(bytes.begin() + place, value);
            break;
        case 1:
            bytes.erase(bytes.begin() + place);
            break;
        default:
            bytes[static_cast<std::size_t>(place)] = value;
        }
    }
    return bytes;
}

TEST(MalformedArchive, randomDamageIsReadOrFails) {
    std::mt19937 random(20240229);
    const std::string_view archives[] = {twoPresets, twoPresetsBigEndian, oneIndex, twoRanges};
    std::size_t read = 0;
    std::size_t refused = 0;
    for (int i = 0; i < 40000; ++i) {
        const Bytes bytes = damaged(fromHex(archives[i % std::size(archives)]), random);
        const Result<Object> object = unarchive(bytes);
        ++(object ? read : refused);
        ASSERT_TRUE(!object || *object != nullptr) << toHex(bytes);
    }
    EXPECT_GT(read, 1000u);
    EXPECT_GT(refused, 20000u);
}

} // namespace
} // namespace kestrine
