#include "platform/finder/AppleDouble.h"
#include "tests/platform/finder/AppleDoubleBuilder.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <optional>

namespace kestrine {
namespace {

using testing::appleDouble;
using testing::bytesOf;
using testing::serverBlob;

constexpr auto comment = AppleDoubleEntry::comment;
constexpr auto finderInfo = AppleDoubleEntry::finderInfo;

Bytes contentOf(ByteView container, AppleDoubleEntry entry) {
    const Result<AppleDouble> parsed = AppleDouble::parse(container);
    const std::optional<ByteView> content = parsed ? parsed->content(entry) : std::nullopt;
    return content ? Bytes(content->begin(), content->end()) : bytesOf("(nothing)");
}

TEST(AppleDouble, entriesAreFoundByTheirNumberAtAnyPosition) {
    const Bytes usual = serverBlob("Hello", Bytes(32, 7));
    ASSERT_EQ(usual.size(), 402u) << "the layout that file servers use";
    const Bytes otherOrder = appleDouble({{2, bytesOf("fork")}, {4, bytesOf("Hello"), 9}, {9, Bytes(32, 7)}});
    for (const Bytes& container : {usual, otherOrder}) {
        EXPECT_EQ(contentOf(container, comment), bytesOf("Hello"));
        EXPECT_EQ(contentOf(container, finderInfo), Bytes(32, 7));
    }
}

TEST(AppleDouble, aMissingEntryHasNoContentAndNoRoom) {
    const Bytes container = appleDouble({{9, Bytes(32)}});
    EXPECT_EQ(AppleDouble::parse(container)->content(comment), std::nullopt);
    EXPECT_EQ(AppleDouble::parse(container)->room(comment), 0u);
    EXPECT_TRUE(AppleDouble::parse(appleDouble({}))) << "a container may have no entries";
}

TEST(AppleDouble, anEntryHasRoomUpToTheNextOneOrTheEnd) {
    const Bytes container = appleDouble({{9, Bytes(32)}, {4, {}, 200}, {8, Bytes(16)}});
    EXPECT_EQ(AppleDouble::parse(container)->room(comment), 200u);
    EXPECT_EQ(AppleDouble::parse(container)->room(finderInfo), 32u);
    EXPECT_EQ(AppleDouble::parse(appleDouble({{4, {}, 50}}))->room(comment), 50u);
    EXPECT_EQ(AppleDouble::parse(appleDouble({{4, {}}, {8, Bytes(16)}}))->room(comment), 0u);
}

TEST(AppleDouble, newContentChangesOnlyItsOwnEntry) {
    const Bytes before = serverBlob("A long old comment", Bytes(32, 7));
    const Bytes after = AppleDouble::parse(before)->withContent(comment, bytesOf("new"));
    EXPECT_EQ(after, serverBlob("new", Bytes(32, 7)))
        << "no old byte remains, and everything else is unchanged";
    EXPECT_EQ(AppleDouble::parse(after)->withContent(comment, bytesOf("A long old comment")), before);
}

TEST(AppleDouble, contentCanFillTheRoomAndCanBeEmpty) {
    const Bytes before = serverBlob("old", Bytes(32, 7));
    for (const std::size_t length : {0, 199, 200}) {
        const std::string text(length, 'x');
        EXPECT_EQ(AppleDouble::parse(before)->withContent(comment, bytesOf(text)),
                  serverBlob(text, Bytes(32, 7)));
    }
}

TEST(AppleDouble, invalidContainersAreRefused) {
    const Bytes sound = appleDouble({{4, bytesOf("abc")}, {9, Bytes(32)}});
    ASSERT_TRUE(AppleDouble::parse(sound));
    struct Case {
        const char* what;
        std::size_t place;
        Bytes bytes; // overwrite those at `place`
    };
    const Case cases[] = {
        {"a wrong magic number", 3, {0x00}},
        {"AppleDouble version 1", 4, {0x00, 0x01, 0x00, 0x00}},
        {"more entries than fit", 24, {0x00, 0x05}},
        {"the highest possible count of entries", 24, {0xFF, 0xFF}},
        {"an entry inside the header", 30, {0x00, 0x00, 0x00, 0x00}},
        {"an entry inside the list", 30, {0x00, 0x00, 0x00, 0x31}},
        {"an offset beyond the end", 42, {0x00, 0x00, 0x01, 0x00}},
        {"the largest offset", 42, {0xFF, 0xFF, 0xFF, 0xFF}},
        {"a length one beyond the end", 46, {0x00, 0x00, 0x00, 0x21}},
        {"the largest length", 46, {0xFF, 0xFF, 0xFF, 0xFF}},
        {"an entry that overlaps the next", 34, {0x00, 0x00, 0x00, 0x04}},
        {"two entries at one place", 42, {0x00, 0x00, 0x00, 0x32}},
    };
    for (const Case& hostile : cases) {
        Bytes container = sound;
        std::copy(hostile.bytes.begin(), hostile.bytes.end(),
                  container.begin() + static_cast<std::ptrdiff_t>(hostile.place));
        EXPECT_FALSE(AppleDouble::parse(container)) << hostile.what;
    }
}

TEST(AppleDouble, aTruncatedContainerIsRefused) {
    const Bytes sound = appleDouble({{4, bytesOf("abc")}, {9, Bytes(32)}});
    for (std::size_t size = 0; size < sound.size(); ++size)
        EXPECT_FALSE(AppleDouble::parse(ByteView(sound).first(size))) << size << " bytes";
}

TEST(AppleDouble, theLargestListIsRead) {
    std::vector<testing::BuiltEntry> entries(65535, {2, Bytes(1, 'x')});
    entries.back() = {4, bytesOf("the last")};
    EXPECT_EQ(contentOf(appleDouble(entries), comment), bytesOf("the last"));
}

} // namespace
} // namespace kestrine
