#include "platform/finder/StoredForms.h"
#include "platform/foundation/propertylist/PropertyListText.h"
#include "tests/platform/finder/AppleDoubleBuilder.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

namespace kestrine {
namespace {

using testing::appleDouble;
using testing::bytesOf;
using testing::serverBlob;

const FinderInfo green{fourCharacterCode("JPEG"), fourCharacterCode("8BIM"), 0x0004, {1, 2}, 3, {4, 5}};

Bytes plain(const FinderInfo& information) {
    const auto bytes = bytesOf(information);
    return {bytes.begin(), bytes.end()};
}

/// The stream with all other bytes set, so that unwanted changes are found.
Bytes stream(const FinderInfo& information) {
    Bytes bytes = bytesOf(std::string_view("AFP\0", 4));
    bytes.resize(16, 0xA5);
    const Bytes middle = plain(information);
    bytes.insert(bytes.end(), middle.begin(), middle.end());
    bytes.resize(60, 0x5A);
    return bytes;
}

TEST(StoredComment, plainTextIsReadAndWrittenUnchanged) {
    for (const std::string text : {"", "a", "caf\xC3\xA9 \xF0\x9F\x8D\xB0", "no \xFF UTF-8 \xC3"}) {
        const NSString comment = NSString::fromUTF8(text);
        EXPECT_EQ(commentAsText.read(bytesOf(text)), comment);
        EXPECT_EQ(commentAsText.changed({}, comment), bytesOf(text));
    }
}

TEST(StoredComment, aPropertyListIsRewrittenOrRemovedAndInvalidDataStays) {
    const Bytes stored = propertyListOfText(u"old");
    EXPECT_EQ(commentInPropertyList.read(stored), NSString(u"old"));
    EXPECT_EQ(commentInPropertyList.changed(stored, u"new"), propertyListOfText(u"new"));
    EXPECT_EQ(commentInPropertyList.changed(stored, u""), Bytes());
    for (const Bytes& broken : {Bytes(), bytesOf("bplist00"), bytesOf("old")}) {
        EXPECT_EQ(commentInPropertyList.read(broken), std::nullopt);
        EXPECT_EQ(commentInPropertyList.changed(broken, u"new"), std::nullopt);
    }
}

TEST(StoredComment, anAppleDoubleCommentIsUTF8ElseMacRoman) {
    EXPECT_EQ(commentInAppleDouble.read(serverBlob("caf\xC3\xA9", Bytes(32))), NSString(u"caf\u00E9"));
    EXPECT_EQ(commentInAppleDouble.read(serverBlob("caf\x8E", Bytes(32))), NSString(u"caf\u00E9"));
}

TEST(StoredComment, anEmptyCommentEntryIsNoComment) {
    EXPECT_EQ(commentInAppleDouble.read(serverBlob("", Bytes(32))), std::nullopt);
    EXPECT_EQ(commentInAppleDouble.changed(serverBlob("", Bytes(32)), u"new"), serverBlob("new", Bytes(32)));
    EXPECT_EQ(commentInAppleDouble.changed(appleDouble({{9, Bytes(32)}}), u"new"), std::nullopt);
}

TEST(StoredComment, aCommentTooLongForAppleDoubleIsCutAfterAWholeCharacter) {
    struct Case {
        std::string text, kept;
    };
    const std::string x198(198, 'x'), x199(199, 'x');
    const Case cases[] = {
        {x199 + "y", x199 + "y"},  {x199 + "yz", x199 + "y"},     {x198 + "\xC3\xA9z", x198 + "\xC3\xA9"},
        {x199 + "\xC3\xA9", x199}, {x198 + "\xE2\x82\xAC", x198}, {x198 + "\xF0\x9F\x8D\xB0", x198},
    };
    for (const Case& one : cases)
        EXPECT_EQ(commentInAppleDouble.changed(serverBlob("", Bytes(32)), NSString::fromUTF8(one.text)),
                  serverBlob(one.kept, Bytes(32)))
            << one.text;
}

TEST(StoredComment, invalidUTF8IsCutNearTheLimit) {
    const NSString noCharacters = NSString::fromUTF8(std::string(300, '\x80'));
    const auto changed = commentInAppleDouble.changed(serverBlob("", Bytes(32)), noCharacters);
    EXPECT_EQ(changed, serverBlob(std::string(197, '\x80'), Bytes(32)));
}

TEST(StoredComment, aSmallAppleDoubleEntryIsNotExceeded) {
    const Bytes tight = appleDouble({{4, bytesOf("12345")}, {9, Bytes(32)}});
    EXPECT_EQ(commentInAppleDouble.changed(tight, u"abc\u20AC"),
              appleDouble({{4, bytesOf("abc"), 5}, {9, Bytes(32)}}));
    const Bytes wide = appleDouble({{4, {}, 1000}});
    EXPECT_EQ(commentInAppleDouble.changed(wide, std::u16string(500, u'x')),
              appleDouble({{4, Bytes(200, 'x'), 1000}}));
}

TEST(StoredFinderInfo, thirtyTwoBytesAreTheInformation) {
    EXPECT_EQ(plainFinderInfo.read(plain(green)), green);
    EXPECT_EQ(plainFinderInfo.changed({}, green), plain(green));
    EXPECT_EQ(plainFinderInfo.changed(plain(green), FinderInfo{}), Bytes()) << "zeros are not kept";
    for (const std::size_t size : {0, 31, 33, 64})
        EXPECT_EQ(plainFinderInfo.read(Bytes(size)), std::nullopt) << size << " bytes";
}

TEST(StoredFinderInfo, inAppleDoubleOtherEntriesStay) {
    EXPECT_EQ(finderInfoInAppleDouble.read(serverBlob("c", plain(green))), green);
    EXPECT_EQ(finderInfoInAppleDouble.changed(serverBlob("c", Bytes(32)), green),
              serverBlob("c", plain(green)));
    EXPECT_EQ(finderInfoInAppleDouble.changed(serverBlob("c", plain(green)), FinderInfo{}),
              serverBlob("c", Bytes(32)));
}

TEST(StoredFinderInfo, anAppleDoubleEntryCanBeLongerThanTheInformationButNotShorter) {
    Bytes before(100, 0xEE), after(100, 0xEE);
    const Bytes information = plain(green);
    std::copy(information.begin(), information.end(), after.begin());
    EXPECT_EQ(finderInfoInAppleDouble.changed(appleDouble({{9, before}}), green), appleDouble({{9, after}}));
    const Bytes tooShort = appleDouble({{9, Bytes(31)}});
    EXPECT_EQ(finderInfoInAppleDouble.read(tooShort), std::nullopt);
    EXPECT_EQ(finderInfoInAppleDouble.changed(tooShort, green), std::nullopt);
}

TEST(StoredFinderInfo, theStreamKeepsItsOtherBytesAndTheServersZeroByte) {
    Bytes before = stream(FinderInfo{}), after = stream(green);
    EXPECT_EQ(finderInfoInAFPInfo.read(after), green);
    EXPECT_EQ(finderInfoInAFPInfo.changed(before, green), after);
    before.push_back(0);
    after.push_back(0);
    EXPECT_EQ(finderInfoInAFPInfo.read(after), green);
    EXPECT_EQ(finderInfoInAFPInfo.changed(before, green), after);
}

TEST(StoredFinderInfo, anInvalidStreamHasNoValueAndIsNotChanged) {
    Bytes otherSignature = stream(green), tooShort = stream(green), tooLong = stream(green);
    otherSignature[3] = ' ';
    tooShort.pop_back();
    tooLong.resize(62);
    for (const Bytes& broken : {Bytes(), bytesOf("AFP"), otherSignature, tooShort, tooLong}) {
        EXPECT_EQ(finderInfoInAFPInfo.read(broken), std::nullopt);
        EXPECT_EQ(finderInfoInAFPInfo.changed(broken, green), std::nullopt);
    }
}

} // namespace
} // namespace kestrine
