#include "_MyClasses/Category/StringUtility.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

namespace kestrine {
namespace {

using namespace StringUtility;
using testing::bytesOf;
using testing::TemporaryFolder;

OptionalString detected(std::string_view bytes) {
    return stringWithContentsOfDataByAutoDetectingEncoding(NSData(bytesOf(bytes)));
}

TEST(StringUtilityEncodings, UTF8IsPreferredToShiftJIS) {
    EXPECT_EQ(detected("\xc3\xa9"), NSString(u"é")) << "two half-width katakana in Shift JIS";
    EXPECT_EQ(detected(""), NSString(u""));
}

TEST(StringUtilityEncodings, withAnEscapeByteISO2022JPIsTriedFirst) {
    EXPECT_EQ(detected("a\x1b$B$\"\x1b(Bb"), NSString(u"aあb"));
    EXPECT_EQ(detected("\x1b[31mred"), NSString(u"\x1b[31mred")) << "no such escape sequence: UTF-8";
    EXPECT_EQ(detected("\x1b$B$\"\x1b(B\x82\xa0"), NSString(u"\x1b$B$\"\x1b(Bあ")) << "Shift JIS";
}

TEST(StringUtilityEncodings, asciiWithBackslashesIsNotUnescaped) {
    EXPECT_EQ(detected("a\\u3042"), NSString(u"a\\u3042")) << "UTF-8 comes before non-lossy ASCII";
}

TEST(StringUtilityEncodings, JapaneseEncodingsComeBeforeMacOSRoman) {
    EXPECT_EQ(detected("\x82\xa0"), NSString(u"あ")) << "Shift JIS";
    EXPECT_EQ(detected("\xb6\xc5\xcb\xdc"), NSString(u"ｶﾅﾋﾜ")) << "EUC-JP, but Shift JIS as well";
    EXPECT_EQ(detected("\xc6\xfc\xcb\xdc"), NSString(u"日本")) << "EUC-JP only";
    EXPECT_EQ(detected("r\x8esum\x8e"), NSString(u"résumé")) << "Mac OS Roman: a lead byte ends the text";
    EXPECT_EQ(detected("\xff\xfe\x61"), NSString(u"ˇ˛a")) << "UTF-16 comes last and is never reached";
}

TEST(StringUtilityEncodings, anyBytesCanBeDecoded) {
    for (int first = 0; first < 256; first++)
        for (int second = 0; second < 256; second++) {
            const char bytes[] = {static_cast<char>(first), static_cast<char>(second)};
            ASSERT_TRUE(detected({bytes, 2})) << first << " " << second;
        }
}

TEST(StringUtilityEncodings, filesAreReadCompletely) {
    const TemporaryFolder folder;
    const NSString sjis = NSString::fromUTF8(folder.write("sjis.txt", "\x82\xa0\n"));
    const NSString utf16 =
        NSString::fromUTF8(folder.write("utf16.txt", std::string_view("\xfe\xff\x30\x42", 4)));
    EXPECT_EQ(stringWithContentsOfFileByAutoDetectingEncoding(sjis), NSString(u"あ\n"));
    EXPECT_EQ(stringFromUTF8DataFilePath(sjis), std::nullopt);
    EXPECT_EQ(stringFromUTF16DataFilePath(sjis), std::nullopt) << "three bytes";
    EXPECT_EQ(stringFromUTF16DataFilePath(utf16), NSString(u"あ"));
    EXPECT_EQ(stringFromUTF8DataFilePath(NSString::fromUTF8(folder.write("utf8.txt", "é"))), NSString(u"é"));
}

TEST(StringUtilityEncodings, aFileThatCannotBeReadGivesNil) {
    const TemporaryFolder folder;
    const NSString missing = NSString::fromUTF8(folder / "missing");
    EXPECT_EQ(stringWithContentsOfFileByAutoDetectingEncoding(missing), std::nullopt);
    EXPECT_EQ(stringFromUTF8DataFilePath(missing), std::nullopt);
    EXPECT_EQ(stringFromUTF16DataFilePath(missing), std::nullopt);
}

} // namespace
} // namespace kestrine
