#include "platform/foundation/text/Decomposition.h"

#include <gtest/gtest.h>

namespace kestrine {
namespace {

TEST(Decomposition, canonicalSeparatesMarksAndChangesNothingElse) {
    EXPECT_EQ(decomposed(u"\u00e9\uff21\u2460", Decomposition::canonical), u"e\u0301\uff21\u2460");
    EXPECT_EQ(decomposed(u"", Decomposition::canonical), u"");
}

TEST(Decomposition, compatibleAlsoReplacesSimilarCharacters) {
    EXPECT_EQ(decomposed(u"\u00e9\uff21\u2460", Decomposition::compatible), u"e\u0301A1");
}

TEST(Decomposition, textsAreEquivalentWhateverTheirComposition) {
    EXPECT_TRUE(areCanonicallyEquivalent(u"Caf\u00e9", u"Cafe\u0301"));
    EXPECT_TRUE(areCanonicallyEquivalent(u"\u30ac", u"\u30ab\u3099"));
    EXPECT_FALSE(areCanonicallyEquivalent(u"Caf\u00e9", u"Cafe"));
    EXPECT_FALSE(areCanonicallyEquivalent(u"A", u"\uff21"));
}

} // namespace
} // namespace kestrine
