#include "platform/foundation/propertylist/PropertyList.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

namespace kestrine {
namespace {

using testing::bytesOf;

/// A typical preferences file with two keys of this program and other keys.
constexpr const char* preferences = R"(<?xml version="1.0" encoding="UTF-8"?>
<!DOCTYPE plist PUBLIC "-//X//DTD PLIST 1.0//EN" "http://example.com/PropertyList-1.0.dtd">
<plist version="1.0">
<dict>
	<key>resizeSets</key>
	<data>
	QUJD
	REVG
	</data>
	<key>selectionIndexes</key>
	<string>not data</string>
	<key>NSWindow Frame &amp; more</key>
	<string>10 20 &lt;300&gt; caf&#xe9;</string>
	<key>numbers</key>
	<array>
		<integer>-5</integer>
		<real>0.1</real>
		<true/>
		<date>2020-01-02T03:04:05Z</date>
	</array>
	<key>nothing</key>
	<data></data>
</dict>
</plist>
)";

PropertyList read(ByteView content) {
    Result<PropertyList> list = PropertyList::fromBytes(content);
    if (!list)
        throw std::runtime_error(list.failure().text);
    return std::move(*list);
}

std::string text(const Bytes& bytes) { return {bytes.begin(), bytes.end()}; }

TEST(PropertyList, dataIsReadFromXML) {
    const PropertyList list = read(bytesOf(preferences));
    EXPECT_EQ(list.form(), PropertyList::Form::xml);
    ASSERT_NE(list.dataForKey(u"resizeSets"), nullptr);
    EXPECT_EQ(list.dataForKey(u"resizeSets")->bytes(), bytesOf("ABCDEF"));
    EXPECT_EQ(list.dataForKey(u"nothing")->length(), 0u);
}

TEST(PropertyList, dataIsReadFromTheBinaryForm) {
    const PropertyList list = read(read(bytesOf(preferences)).toBinary());
    EXPECT_EQ(list.form(), PropertyList::Form::binary);
    EXPECT_EQ(list.dataForKey(u"resizeSets")->bytes(), bytesOf("ABCDEF"));
}

TEST(PropertyList, aMissingValueOrOneOfAnotherTypeIsNull) {
    const PropertyList list = read(bytesOf(preferences));
    EXPECT_EQ(list.dataForKey(u"selectionIndexes"), nullptr);
    EXPECT_EQ(list.dataForKey(u"numbers"), nullptr);
    EXPECT_EQ(list.dataForKey(u"absent"), nullptr);
    EXPECT_EQ(PropertyList::empty().dataForKey(u"resizeSets"), nullptr);
}

TEST(PropertyList, xmlMayStartWithAByteOrderMarkOrWhiteSpace) {
    for (const char* start : {"\xef\xbb\xbf", " \n\t"}) {
        const PropertyList list = read(bytesOf(std::string(start) + preferences));
        EXPECT_EQ(list.form(), PropertyList::Form::xml);
        EXPECT_NE(list.dataForKey(u"resizeSets"), nullptr);
    }
}

TEST(PropertyList, dataIsKeptInBothForms) {
    Bytes bytes(1000);
    for (std::size_t i = 0; i < bytes.size(); i++)
        bytes[i] = static_cast<std::uint8_t>(i * 7);
    PropertyList list = PropertyList::empty();
    list.setData(u"a", bytesOf("old"));
    list.setData(u"a", bytes);
    list.setData(u"b", {});
    for (const Bytes& written : {list.toBinary(), list.toXML()}) {
        const PropertyList again = read(written);
        EXPECT_EQ(again.dataForKey(u"a")->bytes(), bytes);
        EXPECT_EQ(again.dataForKey(u"b")->length(), 0u);
    }
}

TEST(PropertyList, allOtherKeysAreKeptWhenOneIsChanged) {
    PropertyList list = read(bytesOf(preferences));
    list.setData(u"selectionIndexes", bytesOf("new"));
    const std::string written = text(list.toBytes());
    for (const char* kept :
         {"<key>NSWindow Frame &amp; more</key>", "10 20 &lt;300&gt; caf\xc3\xa9", "<integer>-5</integer>",
          "<real>0.1000", "<true/>", "<date>2020-01-02T03:04:05Z</date>", "QUJDREVG"})
        EXPECT_NE(written.find(kept), std::string::npos) << kept;
    EXPECT_EQ(written.find("not data"), std::string::npos);
}

TEST(PropertyList, aListIsWrittenInTheFormFromWhichItWasRead) {
    EXPECT_TRUE(text(read(bytesOf(preferences)).toBytes()).starts_with("<?xml"));
    EXPECT_TRUE(text(read(read(bytesOf(preferences)).toBinary()).toBytes()).starts_with("bplist00"));
    EXPECT_TRUE(text(PropertyList::empty().toBytes()).starts_with("bplist00"));
}

TEST(PropertyList, bothFormsHaveTheSameContent) {
    const PropertyList list = read(bytesOf(preferences));
    EXPECT_EQ(text(read(list.toBinary()).toXML()), text(list.toXML()));
}

TEST(PropertyList, aRootThatIsNotADictionaryFails) {
    for (const char* content :
         {"", "x", "bplist00", "<plist", "<plist><array/></plist>", "<plist/>", "<plist></plist>",
          "<plist><string>x</string></plist>", "{ key = <00>; }", "<plist><dict><true/></dict></plist>",
          "<plist><dict><key>a</key><data>AA==</data></array></plist>"})
        EXPECT_FALSE(PropertyList::fromBytes(bytesOf(content))) << content;
}

TEST(PropertyList, anIncompleteBinaryListFails) {
    const Bytes whole = read(bytesOf(preferences)).toBinary();
    for (std::size_t length = 0; length < whole.size(); length++)
        EXPECT_FALSE(PropertyList::fromBytes(ByteView(whole).first(length))) << length;
}

} // namespace
} // namespace kestrine
