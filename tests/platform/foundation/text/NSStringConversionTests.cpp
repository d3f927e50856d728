#include "platform/foundation/NSException.h"
#include "platform/foundation/text/NSStringConversion.h"

#include <gtest/gtest.h>

namespace kestrine {
namespace {

template <class Action>
std::string raisedBy(Action action) {
    try {
        action();
    } catch (const NSException& exception) {
        return exception.name();
    }
    return "nothing";
}

TEST(NSStringConversion, validCharactersAndInvalidBytesAreConverted) {
    for (const std::string bytes : {"", "plain", "caf\xc3\xa9 \xf0\x9f\x98\x80", "caf\xe9", "\xed\xa0\x80"})
        EXPECT_EQ(UTF8String(NSString::fromUTF8(bytes)), bytes);
}

TEST(NSStringConversion, aLoneSurrogateRaises) {
    for (const std::u16string text : {u"\xd800", u"a\xd83dz", u"\xdc00", u"\xdc7f", u"\xdd00", u"\xdfff"})
        EXPECT_EQ(raisedBy([&] { (void)UTF8String(text); }), NSCharacterConversionException);
}

TEST(NSStringConversion, aPathWithAZeroCharacterRaises) {
    const std::u16string text(u"/tmp/a\0b", 8);
    EXPECT_EQ(UTF8String(text).size(), 8u);
    EXPECT_EQ(raisedBy([&] { (void)fileSystemRepresentation(text); }), NSCharacterConversionException);
    EXPECT_EQ(fileSystemRepresentation(u"/tmp/a"), "/tmp/a");
}

} // namespace
} // namespace kestrine
