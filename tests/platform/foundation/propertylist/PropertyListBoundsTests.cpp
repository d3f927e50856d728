#include "platform/foundation/propertylist/PropertyList.h"
#include "platform/foundation/propertylist/PropertyListBounds.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

namespace kestrine {
namespace {

using testing::bytesOf;

/// A binary property list with the given objects. References have two bytes.
Bytes binaryList(const std::vector<std::string>& objects, std::uint16_t root = 0) {
    std::string content = "bplist00";
    std::string offsets;
    const auto append = [](std::string& to, std::uint64_t number, int bytes) {
        while (bytes-- > 0)
            to += static_cast<char>(number >> (8 * bytes));
    };
    for (const std::string& object : objects) {
        append(offsets, content.size(), 4);
        content += object;
    }
    const std::uint64_t table = content.size();
    content += offsets + std::string(6, '\0') + '\4' + '\2';
    append(content, objects.size(), 8);
    append(content, root, 8);
    append(content, table, 8);
    return bytesOf(content);
}

std::string reference(unsigned index) { return {static_cast<char>(index >> 8), static_cast<char>(index)}; }

/// An array of at most 14 objects.
std::string arrayOf(const std::vector<unsigned>& indexes) {
    std::string object(1, static_cast<char>(0xa0 | indexes.size()));
    for (const unsigned index : indexes)
        object += reference(index);
    return object;
}

std::string repeated(std::string_view text, std::size_t times) {
    std::string result;
    for (std::size_t i = 0; i < times; i++)
        result += text;
    return result;
}

/// The reason why `content` must not be parsed; empty if it may be parsed.
std::optional<Reason> refusal(const Bytes& content) {
    const Result<void> result = checkPropertyListBounds(content);
    return result ? std::nullopt : std::optional(result.failure().reason);
}
std::optional<Reason> refusal(const std::string& content) { return refusal(bytesOf(content)); }

constexpr std::nullopt_t passes = std::nullopt;

const std::string yes = "\x09";

TEST(PropertyListBounds, contentIsLimitedTo16MiB) {
    EXPECT_EQ(refusal(std::string(maxPropertyListSize, ' ')), passes);
    EXPECT_EQ(refusal(std::string(maxPropertyListSize + 1, ' ')), Reason::tooLarge);
}

TEST(BinaryPropertyListBounds, everyKindOfObjectPasses) {
    using namespace std::string_literals;
    const std::vector<std::string> kinds{"\x00"s,
                                         "\x08",
                                         yes,
                                         "\x10\x05",
                                         "\x13" + std::string(8, 'i'),
                                         "\x14" + std::string(16, 'i'),
                                         "\x22" + std::string(4, 'r'),
                                         "\x23" + std::string(8, 'r'),
                                         "\x33" + std::string(8, 'd'),
                                         "\x43"
                                         "abc",
                                         "\x4f\x10\x20" + std::string(32, 'd'),
                                         "\x52"
                                         "ab",
                                         "\x61\x30\x42"s,
                                         "\x80\x07",
                                         "\xa0",
                                         "\xc0",
                                         "\xd0",
                                         "\xaf\x10\x01" + reference(1)};
    for (std::size_t i = 0; i + 1 < kinds.size(); i++)
        EXPECT_EQ(refusal(binaryList({kinds[i]})), passes) << i;
    EXPECT_EQ(refusal(binaryList({kinds.back(), yes})), passes);
}

TEST(BinaryPropertyListBounds, unknownKindsOfObjectsFail) {
    for (const char* object :
         {"\x15", "\x21x", "\x34", "\x70", "\x88xxxxxxxxx", "\x90", "\xb0", "\xe0", "\xf0", "\x4f\x20"})
        EXPECT_EQ(refusal(binaryList({std::string(object) + std::string(40, 'x')})), Reason::malformed);
}

TEST(BinaryPropertyListBounds, anObjectThatExceedsTheObjectAreaFails) {
    for (const char* object :
         {"\x44xxx", "\x4f\x10\x7f", "\x4f\x13\x7f\xff\xff\xff\xff\xff\xff\xff", "\x4f\x11", "\x4f", "\x52x",
          "\x62xxx", "\x6f\x13\x80\x01\x01\x01\x01\x01\x01\x01", "\x13xxxxxxx", "\xa1x", "\xd1xxx",
          "\xaf\x13\x7f\xff\xff\xff\xff\xff\xff\xff", "\x87xxxxxxx"})
        EXPECT_EQ(refusal(binaryList({object})), Reason::malformed) << object;
}

TEST(BinaryPropertyListBounds, aReferenceOutOfRangeFails) {
    EXPECT_EQ(refusal(binaryList({arrayOf({1}), yes})), passes);
    EXPECT_EQ(refusal(binaryList({arrayOf({2}), yes})), Reason::malformed);
    EXPECT_EQ(refusal(binaryList({yes}, 1)), Reason::malformed);
}

TEST(BinaryPropertyListBounds, anInvalidTrailerFails) {
    const Bytes good = binaryList({yes});
    const std::size_t trailer = good.size() - 32;
    struct Change {
        std::size_t at;
        std::uint8_t byte;
    };
    for (const Change change : {Change{6, 0},
                                {6, 9},
                                {7, 0},
                                {7, 255},
                                {15, 2},
                                {8, 0x80},
                                {16, 1},
                                {23, 1},
                                {24, 0xff},
                                {31, 7},
                                {31, 13}}) {
        Bytes bad = good;
        bad[trailer + change.at] = change.byte;
        EXPECT_EQ(refusal(bad), Reason::malformed) << change.at;
    }
    EXPECT_EQ(refusal("bplist00"), Reason::truncated);
    EXPECT_EQ(refusal("bplist01" + std::string(40, 'x')), Reason::unsupported);
}

TEST(BinaryPropertyListBounds, anObjectThatContainsItselfFails) {
    EXPECT_EQ(refusal(binaryList({arrayOf({0})})), Reason::malformed);
    EXPECT_EQ(refusal(binaryList({arrayOf({1}), arrayOf({2, 0}), yes})), Reason::malformed);
    EXPECT_EQ(refusal(binaryList({"\xd1" + reference(1) + reference(0), "\x51k"})), Reason::malformed);
}

TEST(BinaryPropertyListBounds, anObjectMayBeReferredToSeveralTimes) {
    EXPECT_EQ(refusal(binaryList({arrayOf({1, 1, 2}), yes, arrayOf({1, 1})})), passes);
}

TEST(BinaryPropertyListBounds, nestingIsLimitedTo512Levels) {
    std::vector<std::string> chain;
    for (unsigned i = 1; i < 512; i++)
        chain.push_back(arrayOf({i}));
    chain.push_back(arrayOf({512}));
    chain.push_back(yes);
    EXPECT_EQ(refusal(binaryList(chain)), passes);
    chain.back() = arrayOf({});
    EXPECT_EQ(refusal(binaryList(chain)), Reason::tooLarge);
}

TEST(BinaryPropertyListBounds, sharedObjectsCountOncePerReference) {
    std::vector<std::string> doubling;
    for (unsigned i = 1; i <= 40; i++)
        doubling.push_back(arrayOf({i, i}));
    doubling.push_back(yes);
    EXPECT_EQ(refusal(binaryList(doubling)), Reason::tooLarge);
}

TEST(BinaryPropertyListBounds, sharedBytesCountOncePerReference) {
    const std::string mebibyte = "\x4f\x12" + std::string("\x00\x10\x00\x00", 4) + std::string(1 << 20, 'x');
    const auto times = [&](unsigned count) {
        return binaryList(
            {"\xaf\x10" + std::string(1, static_cast<char>(count)) + repeated(reference(1), count),
             mebibyte});
    };
    EXPECT_EQ(refusal(times(64)), passes);
    EXPECT_EQ(refusal(times(65)), Reason::tooLarge);
}

TEST(XMLPropertyListBounds, nestingIsLimitedTo512Levels) {
    for (const char* name : {"array", "dict"}) {
        const std::string opening = std::string("<") + name + ">";
        const std::string closing = std::string("</") + name + " >";
        EXPECT_EQ(refusal(repeated(opening, 512) + repeated(closing, 512)), passes);
        EXPECT_EQ(refusal(repeated(opening, 513) + repeated(closing, 513)), Reason::tooLarge);
    }
    EXPECT_EQ(refusal(repeated("<array><dict/></array>", 600)), passes)
        << "consecutive containers are not nested";
}

TEST(XMLPropertyListBounds, unmatchedEndTagsCannotHideTheNesting) {
    for (const char* hidden :
         {"<array><!--</array>-->", "<array><![CDATA[</array>]]>", "<array><?x </array>?>"})
        EXPECT_EQ(refusal(repeated(hidden, 600)), Reason::tooLarge) << hidden;
    for (const char* unclear : {"<array></dict>", "<array></array/>", "</array>", "<?<array>?\"?>",
                                "<a b=\"></array>\">", "<a <array>>", "<!x>", "<!DOCTYPE \">"})
        EXPECT_EQ(refusal(repeated(unclear, 2)), Reason::malformed) << unclear;
}

TEST(XMLPropertyListBounds, anOwnDocumentTypeIsRefused) {
    EXPECT_EQ(refusal("<!DOCTYPE plist PUBLIC \"-//X//DTD\" \"http://x/y.dtd\"><plist/>"), passes);
    EXPECT_EQ(refusal("<!DOCTYPE plist [<!ENTITY a \"b\">]><plist/>"), Reason::refused);
    EXPECT_EQ(refusal("<!DOCTYPE plist [ ]><plist/>"), Reason::refused);
}

TEST(XMLPropertyListBounds, incompleteTagsAreRefused) {
    for (const char* content : {"<plist", "<!-- ->", "<![CDATA[ ]]", "<?xml ", "<!DOCTYPE plist"})
        EXPECT_EQ(refusal(content), Reason::truncated) << content;
}

TEST(XMLPropertyListBounds, elementsAreCounted) {
    EXPECT_EQ(refusal(repeated("<a/>", maxPropertyListObjects)), passes);
    EXPECT_EQ(refusal(repeated("<a/>", maxPropertyListObjects + 1)), Reason::tooLarge);
}

TEST(XMLPropertyListBounds, theNumberOfKeysInADictionaryIsLimited) {
    const auto dictionary = [](std::size_t keys) {
        return "<dict>" + repeated("<key>a</key><true/>", keys) + "</dict>";
    };
    // n keys need n * (n - 1) / 2 comparisons; these need 2^25 together, which is the limit.
    const std::string most = dictionary(8192) + dictionary(91) + dictionary(2);
    EXPECT_EQ(refusal(most), passes);
    EXPECT_EQ(refusal(most + dictionary(2)), Reason::tooLarge);
    EXPECT_EQ(refusal(dictionary(8193)), Reason::tooLarge);
    EXPECT_EQ(refusal(repeated(dictionary(100), 1000)), passes)
        << "only keys of the same dictionary are compared";
}

TEST(XMLPropertyListBounds, theNumberOfCharacterReferencesInAStringIsLimited) {
    const auto text = [](std::size_t references) {
        return "<string>" + repeated("&amp;", references) + "</string>";
    };
    EXPECT_EQ(refusal(text(50000)), passes);
    EXPECT_EQ(refusal(text(100000)), Reason::tooLarge);
    EXPECT_EQ(refusal(repeated(text(1000), 100)), passes);
}

} // namespace
} // namespace kestrine
