// Case mapping needs ICU, which these tests require: it is among the packages that kestrine depends on.
#include "platform/foundation/text/UnicodeCase.h"
#include "tests/support/EnvironmentVariable.h"
#include "tests/support/IsolatedProcess.h"

#include <gtest/gtest.h>

namespace kestrine {
namespace {

TEST(UnicodeCase, asciiLettersAndNothingElseInASCIIChange) {
    EXPECT_EQ(upperCased(u"@az[`AZ{ 09~\x7f"), u"@AZ[`AZ{ 09~\x7f");
    EXPECT_EQ(lowerCased(u"@az[`AZ{ 09~\x7f"), u"@az[`az{ 09~\x7f");
    EXPECT_EQ(upperCased(u""), u"");
    EXPECT_EQ(lowerCased(u""), u"");
}

TEST(UnicodeCase, asciiBesideOtherLettersChangesToo) {
    EXPECT_EQ(upperCased(u"a-é-z"), u"A-É-Z");
    EXPECT_EQ(lowerCased(u"A-É-Z"), u"a-é-z");
    EXPECT_EQ(upperCased(u"\u0080ÿ"), u"\u0080Ÿ");
}

TEST(UnicodeCase, oneCharacterMayBecomeSeveral) {
    EXPECT_EQ(upperCased(u"ß"), u"SS");
    EXPECT_EQ(upperCased(u"ŉ"), u"\u02bcN");
    EXPECT_EQ(upperCased(u"ﬁﬃ"), u"FIFFI");
    EXPECT_EQ(upperCased(u"ΐ"), u"\u0399\u0308\u0301");
    EXPECT_EQ(upperCased(u"ßßßßßßßß"), u"SSSSSSSSSSSSSSSS");
    EXPECT_EQ(lowerCased(u"İ"), u"i\u0307");
}

TEST(UnicodeCase, aSigmaAtTheEndOfAWordHasItsFinalForm) {
    EXPECT_EQ(lowerCased(u"ΟΔΟΣ ΣΑΣ"), u"οδος σας");
    EXPECT_EQ(lowerCased(u"Σ"), u"σ");
    EXPECT_EQ(upperCased(u"οδος"), u"ΟΔΟΣ");
}

TEST(UnicodeCase, titleCaseDigraphsHaveBothOtherForms) {
    EXPECT_EQ(upperCased(u"ǅǆ"), u"ǄǄ");
    EXPECT_EQ(lowerCased(u"ǅǄ"), u"ǆǆ");
}

TEST(UnicodeCase, lettersOutsideTheBasicPlaneAreMapped) {
    EXPECT_EQ(upperCased(u"\U00010428a"), u"\U00010400A");
    EXPECT_EQ(lowerCased(u"\U00010400A"), u"\U00010428a");
}

TEST(UnicodeCase, loneSurrogatesStay) {
    EXPECT_EQ(upperCased(u"a\xdcff"), u"A\xdcff");
    EXPECT_EQ(lowerCased(u"\xd801"
                         "A"),
              u"\xd801"
              "a");
    EXPECT_EQ(caseFolded(0xd801), 0xd801u);
    EXPECT_EQ(caseFolded(0xdcff), 0xdcffu);
}

TEST(UnicodeCase, theLocaleHasNoInfluence) {
    testing::runIsolated([] {
        const testing::EnvironmentVariable all("LC_ALL", "tr_TR.UTF-8");
        EXPECT_EQ(upperCased(u"ié"), u"IÉ");
        EXPECT_EQ(lowerCased(u"IÉ"), u"ié");
        EXPECT_EQ(caseFolded(U'I'), U'i');
    });
}

TEST(UnicodeCase, foldingGivesOneCodePointForOne) {
    struct Row {
        char32_t codePoint, folded;
    };
    for (const Row& row :
         {Row{U'Z', U'z'}, Row{U'@', U'@'}, Row{U'[', U'['}, Row{U'É', U'é'}, Row{U'ς', U'σ'},
          Row{U'Σ', U'σ'}, Row{U'ẞ', U'ß'}, Row{U'ß', U'ß'}, Row{U'ǅ', U'ǆ'},
          Row{U'\U00010400', U'\U00010428'}, Row{U'\u212a', U'k'}, Row{U'ſ', U's'}})
        EXPECT_EQ(caseFolded(row.codePoint), row.folded) << std::hex << std::uint32_t(row.codePoint);
    EXPECT_EQ(caseFolded(0x130), 0x130u) << "only Turkish folds it to one letter";
}

} // namespace
} // namespace kestrine
