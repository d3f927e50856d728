#include "kestrinectl/compare/Base64.h"

#include <gtest/gtest.h>

namespace kestrine {
namespace {

std::string base64Of(const std::string& text) { return base64(Bytes(text.begin(), text.end())); }

TEST(Base64, theExamplesOfTheStandardAreMet) { // RFC 4648, section 10
    EXPECT_EQ(base64Of(""), "");
    EXPECT_EQ(base64Of("f"), "Zg==");
    EXPECT_EQ(base64Of("fo"), "Zm8=");
    EXPECT_EQ(base64Of("foo"), "Zm9v");
    EXPECT_EQ(base64Of("foob"), "Zm9vYg==");
    EXPECT_EQ(base64Of("fooba"), "Zm9vYmE=");
    EXPECT_EQ(base64Of("foobar"), "Zm9vYmFy");
}

TEST(Base64, theLastDigitsAreThoseOfTheStandardAlphabet) {
    EXPECT_EQ(base64(Bytes{0xff, 0xff, 0xfe}), "///+");
}

} // namespace
} // namespace kestrine
