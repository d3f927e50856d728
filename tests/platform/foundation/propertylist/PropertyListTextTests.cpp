#include "platform/foundation/propertylist/PropertyList.h"
#include "platform/foundation/propertylist/PropertyListText.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

namespace kestrine {
namespace {

using testing::bytesOf;

/// A binary property list with one object: the header, the object at offset 8, the offset table, and the
/// trailer (sizes of offsets and references, number of objects, root, position of the table).
Bytes withObject(std::string_view object) {
    const std::string table(1, 8);
    const auto tablePlace = static_cast<char>(8 + object.size());
    const std::string trailer = std::string(6, 0) + "\1\1" + std::string(7, 0) + '\1' + std::string(8, 0)
                                + std::string(7, 0) + tablePlace;
    return bytesOf("bplist00" + std::string(object) + table + trailer);
}

TEST(PropertyListText, asciiTakesOneBytePerCharacter) {
    EXPECT_EQ(*textOfPropertyList(withObject("\x55Hello")), NSString(u"Hello"));
    EXPECT_EQ(propertyListOfText(u"Hello"), withObject("\x55Hello"));
    EXPECT_EQ(*textOfPropertyList(withObject("\x50")), NSString());
    EXPECT_EQ(propertyListOfText(u""), withObject("\x50"));
}

TEST(PropertyListText, otherTextIsUTF16) {
    const std::string_view object("\x63\0a\xD8\x3C\xDF\x70", 7); // "a" and a character beyond U+FFFF
    EXPECT_EQ(*textOfPropertyList(withObject(object)), NSString(u"a\U0001F370"));
    EXPECT_EQ(propertyListOfText(u"a\U0001F370"), withObject(object));
}

TEST(PropertyListText, longStringsAreKept) {
    for (const std::size_t length : {14, 15, 16, 255, 256, 20000})
        for (const char16_t unit : {u'x', u'\u6F22'}) {
            const NSString text(std::u16string(length, unit));
            const Result<NSString> read = textOfPropertyList(propertyListOfText(text));
            ASSERT_TRUE(read) << read.failure().text;
            EXPECT_EQ(*read, text);
        }
}

TEST(PropertyListText, charactersThatCannotBeStoredAreReplaced) {
    const NSString odd = NSString::fromUTF8(std::string_view("a\0b\xFF", 4)) + NSString(u"\xD800");
    EXPECT_EQ(*textOfPropertyList(propertyListOfText(odd)), NSString(u"a\uFFFDb\uFFFD\uFFFD"));
}

TEST(PropertyListText, anyOtherContentThanOneStringFails) {
    const Bytes number = withObject("\x10\x05"), data = withObject("\x42xy");
    for (const Bytes& other : {number, data, PropertyList::empty().toBinary(), bytesOf("bplist00"), Bytes()})
        EXPECT_FALSE(textOfPropertyList(other));
    EXPECT_EQ(textOfPropertyList(bytesOf("<plist><string>x</string></plist>")).failure().reason,
              Reason::unsupported);
}

TEST(PropertyListText, incompleteAndDamagedListsFailSafely) {
    const Bytes sound = withObject(std::string_view("\x63\0a\xD8\x3C\xDF\x70", 7));
    for (std::size_t place = 0; place < sound.size(); ++place) {
        EXPECT_FALSE(textOfPropertyList(ByteView(sound).first(place))) << place << " bytes";
        for (int bit = 0; bit < 8; ++bit) {
            Bytes changed = sound;
            changed[place] ^= static_cast<std::uint8_t>(1 << bit);
            const Result<NSString> text = textOfPropertyList(changed);
            EXPECT_TRUE(!text || text->length() <= changed.size());
        }
    }
}

} // namespace
} // namespace kestrine
