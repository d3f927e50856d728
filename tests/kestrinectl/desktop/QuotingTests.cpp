#include "kestrinectl/desktop/Quoting.h"

#include <gtest/gtest.h>

namespace kestrine {
namespace {

TEST(Quoting, shellWordsAreInSingleQuotes) {
    EXPECT_EQ(shellWord("a b$(c)`d`\"\\\n"), "'a b$(c)`d`\"\\\n'");
    EXPECT_EQ(shellWord("it's"), "'it'\\''s'");
    EXPECT_EQ(shellWord(""), "''");
}

TEST(Quoting, execArgumentsAreQuotedAndThenEscaped) {
    EXPECT_EQ(execArgument("/usr/bin/x"), "\"/usr/bin/x\"");
    EXPECT_EQ(execArgument("a \"b\" `c` $d"), R"("a \\"b\\" \\`c\\` \\$d")");
    EXPECT_EQ(execArgument("a\\b"), R"("a\\\\b")");
    EXPECT_EQ(execArgument("50%F"), "\"50%%F\"");
}

TEST(Quoting, valuesOfKeyFilesKeepSpacesAtTheEnds) {
    EXPECT_EQ(keyFileValue(" a b "), "\\sa b\\s");
    EXPECT_EQ(keyFileValue(" "), "\\s");
    EXPECT_EQ(keyFileValue("a\\b\nc\rd\te"), "a\\\\b\\nc\\rd\\te");
    EXPECT_EQ(keyFileValue(""), "");
}

TEST(Quoting, wordsOfSetsHaveNoSpecialCharacters) {
    EXPECT_EQ(wordOfSetName("Web_2.x-y"), "Web_2.x-y");
    EXPECT_EQ(wordOfSetName("-l"), "=2Dl");
    EXPECT_EQ(wordOfSetName("50%F =\xff\n"), "50=25F=20=3D=FF=0A");
}

TEST(Quoting, everyNameComesBackFromItsWord) {
    std::string all;
    for (int byte = 1; byte < 256; ++byte)
        all += static_cast<char>(byte);
    for (const std::string& name :
         {all, std::string("-"), std::string(), std::string("=41"), std::string("Web")})
        EXPECT_EQ(setNameOfWord(wordOfSetName(name)), name);
}

TEST(Quoting, otherWordsStandForNoSet) {
    for (const char* word : {"a b", "=", "=4", "=4g", "=41", "=2d", "-l", "50%"})
        EXPECT_EQ(setNameOfWord(word), std::nullopt) << word;
}

TEST(Quoting, menusShowPrintableNamesOnly) {
    for (const char* name : {"Web", " ", "\u00e4", "<i>", "50%", "\U0001f642"})
        EXPECT_EQ(objectionToLabel(name), std::nullopt) << name;
    for (const char* name :
         {"", "a\nb", "\x1b", "\x7f", "\u0085", "\u2028", "\ufffe", "\U0001ffff", "\xff", "a\xc3"})
        EXPECT_NE(objectionToLabel(name), std::nullopt) << name;
}

} // namespace
} // namespace kestrine
