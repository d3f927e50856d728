#include "platform/foundation/text/StringsTable.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

namespace kestrine {
namespace {

using testing::bytesOf;

struct TableCase {
    std::string content;
    StringsTable table;
};

void expectTables(const std::vector<TableCase>& cases) {
    for (const TableCase& row : cases) {
        const Result<StringsTable> table = parseStringsTable(bytesOf(row.content));
        ASSERT_TRUE(table) << row.content << ": " << table.failure().text;
        EXPECT_EQ(*table, row.table) << row.content;
    }
}

void expectRefused(Reason reason, const std::vector<std::string>& contents) {
    for (const std::string& content : contents) {
        const Result<StringsTable> table = parseStringsTable(bytesOf(content));
        ASSERT_FALSE(table) << content;
        EXPECT_EQ(table.failure().reason, reason) << content;
    }
}

TEST(StringsTable, keysHaveValues) {
    expectTables({{"", {}},
                  {" \n\t", {}},
                  {R"("a" = "b";)", {{u"a", u"b"}}},
                  {R"("a"="b";"c"="d";)", {{u"a", u"b"}, {u"c", u"d"}}},
                  {R"("" = "";)", {{u"", u""}}},
                  {"'a \"x\"' = 'b';", {{u"a \"x\"", u"b"}}},
                  {"\"a\nb\" = \"c;//d\";", {{u"a\nb", u"c;//d"}}}});
}

TEST(StringsTable, wordsNeedNoQuotes) {
    expectTables({{"key=value-1.0/x:$_;", {{u"key", u"value-1.0/x:$_"}}}});
    expectRefused(Reason::malformed, {"a b = c;", "\xc3\xa9 = a;", "a = b c;"});
}

TEST(StringsTable, aKeyAloneIsItsOwnValue) {
    expectTables({{"\"a b\"; c ;", {{u"a b", u"a b"}, {u"c", u"c"}}}});
}

TEST(StringsTable, theLastOfTwoValuesCounts) { expectTables({{"a = b; a = c;", {{u"a", u"c"}}}}); }

TEST(StringsTable, commentsMayBeBetweenAllParts) {
    expectTables({{"/* x = y; */ a /**/ = // c\n b /* ; */ ; // end", {{u"a", u"b"}}},
                  {"// \"\r\na=b;//", {{u"a", u"b"}}},
                  {"/* * / // */", {}}});
}

TEST(StringsTable, escapesStandForCharacters) {
    expectTables({{R"("a" = "\"\\\n\r\t\a\b\f\v\'\q";)", {{u"a", u"\"\\\n\r\t\a\b\f\v'q"}}},
                  {R"("a" = "\U00e9\U3042\ud83d\Ude00\U41g";)", {{u"a", u"\u00e9\u3042\U0001f600Ag"}}},
                  {R"("a" = "\101\60\0018\7";)",
                   {{u"a", u"A0\u0001"
                           u"8\a"}}},
                  {R"("a" = "\Ug\u";)", {{u"a", u"Ugu"}}},
                  {"\"a\" = \"b\\\nc\";", {{u"a", u"b\nc"}}}});
}

TEST(StringsTable, utf16IsReadInBothByteOrders) {
    const std::string text("\0\"\0a\0\"\0=\0\"\x30\x42\0\"\0;", 16);
    std::string swapped;
    for (std::size_t i = 0; i < text.size(); i += 2)
        swapped += {text[i + 1], text[i]};
    expectTables({{"\xfe\xff" + text, {{u"a", u"あ"}}}, {"\xff\xfe" + swapped, {{u"a", u"あ"}}}});
    expectRefused(Reason::truncated, {"\xfe\xff" + text + "x"});
}

TEST(StringsTable, utf8MayHaveAByteOrderMark) {
    expectTables(
        {{"\xef\xbb\xbf\"a\" = \"\xc3\xa9\";", {{u"a", u"é"}}}, {"\"a\" = \"\xc3\xa9\";", {{u"a", u"é"}}}});
}

TEST(StringsTable, anIncompleteTableFails) {
    expectRefused(Reason::truncated,
                  {"a = b; c", "a = b; c =", "a = b; c = \"d", "a = b; c = d", "a = b; \"c\\", "a = b; /* c",
                   "a = b; c /*", "a = /*", "a = b; c = \"\\U"});
}

TEST(StringsTable, malformedEntriesFail) {
    expectRefused(Reason::malformed, {"=", "a = = b;", ";", "{ a = b; }", "a = (b);", "a = { b = c; };",
                                      "a = <00>;", "\"a\" \"b\";", "*/"});
}

TEST(StringsTable, aTableOfMoreThan4MiBFails) {
    EXPECT_TRUE(parseStringsTable(Bytes(maxStringsTable, ' ')));
    EXPECT_EQ(parseStringsTable(Bytes(maxStringsTable + 1, ' ')).failure().reason, Reason::tooLarge);
}

} // namespace
} // namespace kestrine
