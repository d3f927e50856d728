#include "platform/foundation/archiving/TypedStreamWriter.h"

#include "tests/platform/foundation/archiving/ArchiveBytes.h"

#include <gtest/gtest.h>
#include <limits>

namespace kestrine {
namespace {

using namespace testing;

/// The bytes that `write` adds after the header.
template <class Write>
std::string written(Write write) {
    TypedStreamWriter writer;
    const std::size_t header = fromHex(littleHeader).size();
    write(writer);
    const Bytes bytes = writer.takeBytes();
    return toHex(ByteView(bytes).subspan(header));
}

template <class T>
std::string writtenNumber(T value) {
    return written([value](TypedStreamWriter& writer) { writer.writeNumber(value); });
}

TEST(TypedStreamWriter, anArchiveStartsWithVersionSignatureAndSystemVersion) {
    EXPECT_EQ(toHex(TypedStreamWriter().takeBytes()), toHex(fromHex(littleHeader)));
}

TEST(TypedStreamWriter, integersTakeTheShortestForm) {
    const std::pair<std::int64_t, std::string_view> rows[] = {
        {0, "00"},
        {127, "7f"},
        {128, "818000"},
        {-110, "92"},
        {-111, "8191ff"},
        {32767, "81ff7f"},
        {32768, "8200800000"},
        {-32767, "810180"},
        {-32768, "820080ffff"},
        {2147483647, "82ffffff7f"},
        {-2147483648, "8200000080"},
        {2147483648, "870000008000000000"},
        {std::numeric_limits<std::int64_t>::min(), "870000000000000080"},
    };
    for (const auto& [value, bytes] : rows) {
        EXPECT_EQ(writtenNumber(value), bytes) << value;
    }
}

TEST(TypedStreamWriter, unsignedIntegersAreWrittenAsTheirSignedBits) {
    EXPECT_EQ(writtenNumber(std::uint32_t{40000}), "82409c0000");
    EXPECT_EQ(writtenNumber(std::uint32_t{4294967295}), "ff");
    EXPECT_EQ(writtenNumber(std::uint16_t{40000}), "82409c0000");
    EXPECT_EQ(writtenNumber(std::numeric_limits<std::uint64_t>::max()), "ff");
}

TEST(TypedStreamWriter, charactersAreWrittenAsBytesWithoutTag) {
    EXPECT_EQ(writtenNumber(std::int8_t{-124}), "84");
    EXPECT_EQ(writtenNumber(std::uint8_t{133}), "85");
}

TEST(TypedStreamWriter, wholeFloatsAreWrittenAsIntegers) {
    const std::pair<double, std::string_view> rows[] = {
        {70, "46"},
        {1200, "81b004"},
        {-0.0, "00"},
        {62.5, "830000000000404f40"},
        {-2147483646.0, "8202000080"},
        {-2147483647.0, "830000c0ffffffdfc1"},
        {2147483645.0, "82fdffff7f"},
        {2147483646.0, "83000080ffffffdf41"},
        {std::numeric_limits<double>::infinity(), "83000000000000f07f"},
    };
    for (const auto& [value, bytes] : rows) {
        EXPECT_EQ(writtenNumber(value), toHex(fromHex(bytes))) << value;
    }
    EXPECT_EQ(writtenNumber(62.5F), "8300007a42");
    EXPECT_EQ(writtenNumber(1200.0F), "81b004");
    EXPECT_EQ(writtenNumber(std::numeric_limits<float>::quiet_NaN()), "830000c07f");
}

TEST(TypedStreamWriter, equalStringsAreWrittenOnce) {
    EXPECT_EQ(written([](TypedStreamWriter& writer) {
                  writer.writeType("i");
                  writer.writeType("*");
                  writer.writeType("i");
                  writer.writeCString("i");
                  writer.writeCString("i");
                  writer.writeType("*");
              }),
              "840169"
              "84012a"
              "92"
              "8492"
              "92"
              "93");
}

TEST(TypedStreamWriter, objectsAndClassesAreNumberedInTheOrderOfTheirStarts) {
    constexpr ClassVersion chain[] = {{"B", 3}, {"A", 0}};
    EXPECT_EQ(written([&chain](TypedStreamWriter& writer) {
                  EXPECT_EQ(writer.beginObject(chain), 0u);
                  EXPECT_EQ(writer.beginObject(std::span(chain).subspan(1)), 3u);
                  writer.endObject();
                  writer.endObject();
                  writer.writeReference(3);
                  writer.writeNil();
              }),
              "84"
              "8484014203"
              "8484014100"
              "85"
              "8494"
              "86"
              "86"
              "95"
              "85");
}

TEST(TypedStreamWriter, referencesMayNeedMoreThanOneByte) {
    const auto reference = [](std::size_t number) {
        return written([number](TypedStreamWriter& writer) { writer.writeReference(number); });
    };
    EXPECT_EQ(reference(0), "92");
    EXPECT_EQ(reference(109), "ff");
    EXPECT_EQ(reference(110), "00");
    EXPECT_EQ(reference(237), "7f");
    EXPECT_EQ(reference(238), "818000");
}

TEST(TypedStreamWriter, countedBytesMayContainZeros) {
    const Bytes bytes = {0x57, 0x00, 0x62};
    EXPECT_EQ(written([&bytes](TypedStreamWriter& writer) { writer.writeCountedBytes(bytes); }), "03570062");
}

} // namespace
} // namespace kestrine
