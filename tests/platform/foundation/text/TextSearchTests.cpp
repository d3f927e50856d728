#include "platform/foundation/text/TextSearch.h"

#include <gtest/gtest.h>
#include <random>
#include <string>

namespace kestrine {

namespace {

using Text = std::u16string_view;

std::u16string repeated(std::size_t count, std::u16string_view text) {
    std::u16string result;
    for (; count > 0; --count)
        result += text;
    return result;
}

} // namespace

TEST(TextSearch, agreesWithTheStandardSearch) {
    std::mt19937 random(1);
    const auto anyText = [&](std::size_t length) {
        std::u16string text = repeated(length / 7 + 1, u"abababb").substr(0, length);
        for (std::size_t changes = random() % 4; changes > 0 && length > 0; --changes)
            text[random() % length] = u'a';
        return text;
    };
    for (int round = 0; round < 20000; ++round) {
        const std::u16string text = anyText(random() % 300);
        const std::u16string part = random() % 2 == 0
                                        ? anyText(random() % 80)
                                        : text.substr(random() % (text.size() + 1), random() % 80);
        const std::size_t start = random() % 310;
        ASSERT_EQ(findText<char16_t>(text, part, start), text.find(part, start));
    }
}

TEST(TextSearch, longPartsAreFoundAtBothEnds) {
    const std::u16string part = repeated(50, u"a") + u"b";
    EXPECT_EQ(findText<char16_t>(part, part), 0U);
    EXPECT_EQ(findText<char16_t>(u"aaaa" + part, part), 4U);
    EXPECT_EQ(findText<char16_t>(part + u"c", part, 1), Text::npos);
    EXPECT_EQ(findText<char16_t>(part.substr(1), part), Text::npos);
    EXPECT_EQ(findText<char16_t>(part, part, 1000), Text::npos);
    EXPECT_EQ(findText<char16_t>(part + part, part, 1), part.size());
}

TEST(TextSearch, anEmptyPartIsFoundAtTheStart) {
    EXPECT_EQ(findText<char16_t>(u"abc", u"", 2), 2U);
    EXPECT_EQ(findText<char16_t>(u"abc", u"", 4), Text::npos);
}

TEST(TextSearch, nearMatchesDoNotSlowDownTheSearch) {
    const std::u16string text = repeated(1'000'000, u"a");
    EXPECT_EQ(findText<char16_t>(text, repeated(500'000, u"a") + u"b"), Text::npos);
    EXPECT_EQ(findText<char16_t>(text + u"b", repeated(500'000, u"a") + u"b"), 500'000U);
}

} // namespace kestrine
