// Removing all spans at once, compared with removing them one by one, and on long strings for which that
// would take too long (10^11 comparisons and more).
#include "_MyClasses/Category/BracketedSpans.h"
#include "_MyClasses/Category/QuotedSpans.h"
#include "_MyClasses/Category/StringUtility.h"
#include "tests/_MyClasses/StringUtilityTables.h"

#include <gmock/gmock.h>
#include <random>

namespace kestrine::StringUtility {
namespace {

using ::testing::ElementsAre;

constexpr std::size_t megabyte = 1'000'000;

std::u16string digits(std::size_t number) { return NSString::fromUTF8(std::to_string(number)).utf16(); }

/// piece(0), piece(1), ... joined, up to a megabyte.
template <class Piece>
std::u16string megabyteOf(Piece piece) {
    std::u16string text;
    for (std::size_t i = 0; text.size() < megabyte; ++i)
        text += piece(i);
    return text;
}

std::u16string repeated(std::size_t count, std::u16string_view piece) {
    std::u16string text;
    for (; count > 0; --count)
        text += piece;
    return text;
}

/// Removes the spans one by one.
QuotedSpans takenStepByStep(NSString text, const NSString& opening, const NSString& closing,
                            EmptySpan emptySpan) {
    QuotedSpans result;
    while (true) {
        const NSRange range = rangeOfStringFrom(text, opening, closing);
        if (range.length == 0 || (range.length == 2 && emptySpan == EmptySpan::stops))
            break;
        const NSString span = text.substring(range);
        result.spans.push_back(span.utf16().substr(1, range.length - 2));
        text = *removeString(text, span);
    }
    result.rest = text.utf16();
    return result;
}

/// Random strings made of the pieces.
class AnyText {
public:
    explicit AnyText(std::vector<std::u16string> pieces) : pieces_(std::move(pieces)) {}

    std::u16string next() {
        std::u16string text;
        for (std::size_t count = random_() % 30; count > 0; --count)
            text += pieces_[random_() % pieces_.size()];
        return text;
    }

private:
    const std::vector<std::u16string> pieces_;
    std::mt19937 random_{1};
};

} // namespace

TEST(QuotedSpans, areRemovedAsIfOneByOne) {
    AnyText texts({u"\"", u"\"", u"\"a\"", u"\"b\"", u"a", u"b", u" "});
    for (int round = 0; round < 20000; ++round) {
        const std::u16string text = texts.next();
        for (const EmptySpan emptySpan : {EmptySpan::isRemoved, EmptySpan::stops}) {
            const QuotedSpans taken = takeQuotedSpans(text, u'"', emptySpan);
            const QuotedSpans expected = takenStepByStep(text, u"\"", u"\"", emptySpan);
            ASSERT_EQ(taken.rest, expected.rest) << NSString(text).utf8();
            ASSERT_EQ(taken.spans, expected.spans) << NSString(text).utf8();
        }
    }
}

TEST(QuotedSpans, ifTwoSpansShareAQuoteTheFirstIsRemoved) {
    const QuotedSpans taken = takeQuotedSpans(u"\"x\"x\"y\"", u'"', EmptySpan::isRemoved);
    EXPECT_THAT(taken.spans, ElementsAre(u"x", u"y"));
    EXPECT_EQ(taken.rest, u"x");
}

TEST(BracketedSpans, areRemovedAsIfOneByOne) {
    AnyText texts({u"<", u"<", u">", u">", u"<a>", u"<b>", u"a", u"b"});
    for (int round = 0; round < 20000; ++round) {
        const std::u16string text = texts.next();
        for (const EmptySpan emptySpan : {EmptySpan::isRemoved, EmptySpan::stops})
            ASSERT_EQ(withoutBracketedSpans(text, u'<', u'>', emptySpan),
                      takenStepByStep(text, u"<", u">", emptySpan).rest)
                << NSString(text).utf8();
    }
}

TEST(BracketedSpans, areRemovedAsIfOneByOneAfterManyOpeningBrackets) {
    const std::u16string openings(40, u'<');
    AnyText texts({u"<a>", u"<b>", u"<c>", u"a>", u"b>", u"c>", openings, openings + u"<a>", u"<<a>", u"x"});
    for (int round = 0; round < 5000; ++round) {
        const std::u16string text = u"<a>" + texts.next();
        ASSERT_EQ(withoutBracketedSpans(text, u'<', u'>', EmptySpan::isRemoved),
                  takenStepByStep(text, u"<", u">", EmptySpan::isRemoved).rest)
            << NSString(text).utf8();
    }
}

TEST(BracketedSpans, aMegabyteIsProcessedInTime) {
    const std::u16string tags = megabyteOf([](std::size_t i) { return u"<" + digits(i) + u">"; });
    const std::u16string half = tags.substr(0, megabyte / 2); // which ends in the middle of a tag
    const std::u16string cut = half.substr(half.rfind(u'<'));
    const std::u16string openings(megabyte / 2, u'<');
    const std::pair<std::u16string, std::u16string> cases[] = {
        {tags, u""},
        {tags + u"<>" + tags + u"<x>", u"<><x>"},
        {u"a < b<br>c<br>" + tags, u"a c"},
        {tags + openings + tags, openings},
        {openings + std::u16string(megabyte / 2, u'>'), std::u16string(megabyte / 2 - 1, u'>')},
        {half + half, cut + cut},
        {repeated(megabyte / 6, u"<<a>a>"), repeated(megabyte / 6, u"a>")},
    };
    for (const auto& [text, expected] : cases) {
        const std::u16string left = withoutBracketedSpans(text, u'<', u'>', EmptySpan::stops);
        EXPECT_TRUE(left == expected)
            << left.size() << " are left of " << NSString(text.substr(0, 40)).utf8();
    }
}

TEST(QuotedSpans, aMegabyteIsProcessedInTime) {
    const std::u16string phrases = megabyteOf([](std::size_t i) { return u"\"" + digits(i) + u"\" "; });
    const QuotedSpans taken = takeQuotedSpans(phrases + phrases, u'"', EmptySpan::stops);
    EXPECT_EQ(taken.spans.size(), taken.rest.size() / 2);
    EXPECT_EQ(taken.spans.back(), digits(taken.spans.size() - 1));
    EXPECT_EQ(takeQuotedSpans(std::u16string(megabyte, u'"'), u'"', EmptySpan::isRemoved).rest, u"");
}

TEST(StringUtilityOfLongStrings, noOperationIsQuadratic) {
    const NSString same(std::u16string(megabyte, u'a')), key(std::u16string(megabyte / 2, u'a') + u"b");
    EXPECT_TRUE(removeString(same, key) == same);
    EXPECT_FALSE(stringHasAnyKey(same, {key}));
    EXPECT_FALSE(hasAnyKey(same, {key.object()}));
    EXPECT_EQ(substringFrom(same, key), std::nullopt);
    const NSString span = key + same;
    EXPECT_TRUE(removeStringFrom(span, u"a", u"b") == same);
    const NSString delimiter(std::u16string(megabyte / 4, u'a'));
    EXPECT_TRUE(removeAllStringStartFrom(same, delimiter, delimiter).isEmpty());
    EXPECT_TRUE(removeAllStringStartFrom(span, delimiter, u"b") == same);
}

} // namespace kestrine::StringUtility
