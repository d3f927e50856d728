#include "platform/foundation/archiving/TypeEncoding.h"

#include "platform/foundation/archiving/TypedStreamFormat.h"

#include <gtest/gtest.h>

namespace kestrine {
namespace {

/// The items as text, with the length of arrays and the number of items inside brackets.
std::string itemsOf(std::string_view text) {
    const Result<TypeEncoding> encoding = parseTypeEncoding(text);
    if (!encoding) {
        return "malformed";
    }
    std::string result;
    for (std::size_t i = 0; i < encoding->size(); ++i) {
        const TypeItem& item = (*encoding)[i];
        result += item.code;
        if (item.code == '[') {
            result += std::to_string(item.count);
        }
        if (item.code == '[' || item.code == '{') {
            result += "(" + std::to_string(item.end - i - 1) + ")";
        }
    }
    return result;
}

TEST(TypeEncoding, typeStringsAreParsedIntoCodesAndBrackets) {
    const std::pair<std::string_view, std::string_view> rows[] = {
        {"i", "i"},
        {"cCBsSiIlLqQfd@#*:%+!", "cCBsSiIlLqQfd@#*:%+!"},
        {"[12c]", "[12(1)c"},
        {"[0c]", "[0(1)c"},
        {"[2if]", "[2(2)if"},
        {"{_NSPoint=ff}", "{(2)ff"},
        {"{?=i}", "{(1)i"},
        {"{ff}", "{(2)ff"},
        {"{}", "{(0)"},
        {"{a=}", "{(0)"},
        {"[3{a=i[2{b=c}]f}]@", "[3(6){(5)i[2(2){(1)cf@"},
    };
    for (const auto& [text, expected] : rows) {
        EXPECT_EQ(itemsOf(text), expected) << text;
    }
}

TEST(TypeEncoding, unknownCodesAndUnbalancedBracketsAreMalformed) {
    for (const std::string_view text : {"",      "x",
                                        "^i",    "?",
                                        "v",     "b3",
                                        "(a=i)", "ri",
                                        " ",     "[",
                                        "[3",    "[3c",
                                        "[c]",   "[-1c]",
                                        "[3]",   "[]",
                                        "]",     "[3c}",
                                        "{",     "{a=",
                                        "{a=i",  "{a",
                                        "{i]",   "}",
                                        "i}",    "[99999999999999999999c]"}) {
        EXPECT_EQ(itemsOf(text), "malformed") << text;
    }
    EXPECT_EQ(itemsOf(std::string_view("i\0i", 3)), "malformed");
}

TEST(TypeEncoding, bracketsMayBeNestedUpToTheDepthLimit) {
    const auto nested = [](std::size_t depth) {
        std::string text;
        for (std::size_t i = 0; i < depth; ++i) {
            text += "[1";
        }
        return text + "i" + std::string(depth, ']');
    };
    EXPECT_TRUE(parseTypeEncoding(nested(typedstream::depthLimit)).ok());
    EXPECT_FALSE(parseTypeEncoding(nested(typedstream::depthLimit + 1)).ok());
    EXPECT_FALSE(parseTypeEncoding(std::string(1000000, '{')).ok());
}

} // namespace
} // namespace kestrine
