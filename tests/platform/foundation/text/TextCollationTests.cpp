#include "platform/foundation/text/TextCollation.h"

#include <gtest/gtest.h>

namespace kestrine {
namespace {

struct Pair {
    const char16_t* text;
    const char16_t* other;
};

void expectOrder(std::initializer_list<Pair> pairs, int order) {
    for (const Pair& pair : pairs) {
        EXPECT_EQ(naturalOrder(pair.text, pair.other), order) << ::testing::PrintToString(pair.text);
        EXPECT_EQ(naturalOrder(pair.other, pair.text), -order) << ::testing::PrintToString(pair.other);
    }
}

TEST(TextCollation, numbersCountByTheirValue) {
    expectOrder({{u"a2", u"a10"}, {u"a9b", u"a10a"}, {u"2", u"10"}, {u"９", u"10"}, {u"1a", u"1b"}}, -1);
    expectOrder({{u"a01", u"a1"}, {u"007", u"7"}}, 0);
}

TEST(TextCollation, caseWidthAndCompositionAreIgnored) {
    expectOrder({{u"abc", u"ABC"}, {u"Ａ", u"a"}, {u"é", u"e\x301"}, {u"ｶﾞ", u"ガ"}, {u"１", u"1"}}, 0);
}

TEST(TextCollation, accentsPunctuationAndSpacesCount) {
    expectOrder({{u"e", u"é"}, {u"a b", u"ab"}, {u"a-b", u"ab"}, {u"a.b", u"a1"}}, -1);
    expectOrder({{u"aé", u"af"}, {u"", u"a"}}, -1);
}

TEST(TextCollation, hiraganaComesBeforeTheSameKatakana) {
    expectOrder({{u"あ", u"ア"}, {u"あ", u"ｱ"}, {u"かア", u"カあ"}, {u"ア", u"い"}, {u"が", u"ガ"}}, -1);
    expectOrder({{u"ア", u"ｱ"}, {u"が", u"か\x3099"}}, 0);
}

TEST(TextCollation, anyStringCanBeCompared) {
    EXPECT_EQ(naturalOrder(u"", u""), 0);
    EXPECT_EQ(naturalOrder(u"\xd800", u"\xd800"), 0);
    EXPECT_EQ(naturalOrder(std::u16string_view(u"a\0b", 3), u"ab"), 0) << "NUL is ignored";
    EXPECT_NE(naturalOrder(u"\xd800", u"a"), 0);
}

} // namespace
} // namespace kestrine
