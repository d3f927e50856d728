#include "tests/platform/imageio/heif/Boxes.h"

#include <gtest/gtest.h>

namespace kestrine::heif {

namespace {

using namespace testing;

constexpr std::uint64_t fileBytes = 1000;

ItemTable sound(std::initializer_list<Bytes> boxes, std::uint64_t offset = 0) {
    // The properties are views into the box.
    static std::vector<std::unique_ptr<LoadedBox>> kept;
    kept.push_back(std::make_unique<LoadedBox>(meta(boxes, offset)));
    Result<ItemTable> table = readItemTable(*kept.back(), fileBytes);
    if (!table) {
        ADD_FAILURE() << table.failure().text;
        return {};
    }
    return *std::move(table);
}

bool isDamaged(std::initializer_list<Bytes> boxes) {
    const Result<ItemTable> table = readItemTable(meta(boxes), fileBytes);
    return !table && table.failure().reason == Reason::malformed;
}

Bytes properties(std::initializer_list<Bytes> known, const Bytes& associations) {
    return box("iprp", {box("ipco", known), associations});
}

} // namespace

TEST(ItemTable, itemsHaveTheirTypesAndMayBeHidden) {
    const ItemTable table = sound({entries({entry(1, "hvc1"), entry(7, "grid", 1)})});
    ASSERT_EQ(table.items.size(), 2u);
    EXPECT_EQ(table.item(1)->type, fourCC("hvc1"));
    EXPECT_FALSE(table.item(1)->isHidden);
    EXPECT_TRUE(table.item(7)->isHidden);
    EXPECT_EQ(table.item(2), nullptr);
}

TEST(ItemTable, laterVersionsHaveLongNumbers) {
    const Bytes item = fullBox("infe", 3, 0, {u32(70000), u16(0), u32(fourCC("av01")), u8(0)});
    const ItemTable table = sound({fullBox("pitm", 1, 0, {u32(70000)}), fullBox("iinf", 1, 0, {u32(1), item}),
                                   fullBox("iref", 1, 0, {box("dimg", {u32(70000), u16(1), u32(70001)})})});
    EXPECT_EQ(table.primary, 70000u);
    ASSERT_NE(table.item(70000), nullptr);
    EXPECT_EQ(table.references.targets(fourCC("dimg"), 70000), std::vector<ItemID>{70001});
}

TEST(ItemTable, encryptedItemsCannotBeRead) {
    const Bytes item = fullBox("infe", 2, 0, {u16(1), u16(1), u32(fourCC("hvc1")), u8(0)});
    const ItemTable table = sound({entries({item})});
    ASSERT_TRUE(table.item(1)->unreadable);
    EXPECT_EQ(table.item(1)->unreadable->reason, Reason::unsupported);
}

TEST(ItemTable, propertiesBelongToItemsInTheGivenOrder) {
    const Bytes associations = fullBox("ipma", 0, 0, {u32(1), u16(1), u8(2), u8(0x82), u8(1)});
    const ItemTable table =
        sound({entries({entry(1, "hvc1")}), properties({box("aaaa", {}), box("bbbb", {})}, associations)});
    const auto& found = table.item(1)->properties;
    ASSERT_EQ(found.size(), 2u);
    EXPECT_EQ(found[0].box.type, fourCC("bbbb"));
    EXPECT_TRUE(found[0].isEssential);
    EXPECT_EQ(found[1].box.type, fourCC("aaaa"));
    EXPECT_FALSE(found[1].isEssential);
}

TEST(ItemTable, numbersOfPropertiesMayHaveTwoBytes) {
    const Bytes associations = fullBox("ipma", 1, 1, {u32(1), u32(1), u8(1), u16(0x8001)});
    const ItemTable table = sound({entries({entry(1, "hvc1")}), properties({box("aaaa", {})}, associations)});
    ASSERT_EQ(table.item(1)->properties.size(), 1u);
    EXPECT_TRUE(table.item(1)->properties[0].isEssential);
}

TEST(ItemTable, propertiesAndItemsThatDoNotExistAreIgnored) {
    const Bytes associations =
        fullBox("ipma", 0, 0, {u32(2), u16(1), u8(2), u8(0), u8(9), u16(5), u8(1), u8(1)});
    const ItemTable table = sound({entries({entry(1, "hvc1")}), properties({box("aaaa", {})}, associations)});
    EXPECT_TRUE(table.item(1)->properties.empty());
}

TEST(ItemTable, incompleteListsAreDamage) {
    EXPECT_TRUE(
        isDamaged({entries({entry(1, "hvc1")}),
                   properties({box("aaaa", {})}, fullBox("ipma", 0, 0, {u32(2), u16(1), u8(1), u8(1)}))}));
    EXPECT_TRUE(isDamaged({fullBox("iref", 0, 0, {box("dimg", {u16(1), u16(3), u16(2)})})}));
    EXPECT_TRUE(isDamaged({entries({fullBox("infe", 2, 0, {u16(1)})})}));
    EXPECT_TRUE(isDamaged({fullBox("iloc", 0, 0, {u16(0x4400), u16(1), u16(1)})}));
}

TEST(ItemTable, referencesAreFoundFromBothEnds) {
    const ItemTable table = sound({fullBox("iref", 0, 0,
                                           {reference("auxl", 2, {u16(1)}), reference("auxl", 3, {u16(1)}),
                                            reference("dimg", 4, {u16(1), u16(1), u16(2)})})});
    EXPECT_EQ(table.references.sources(fourCC("auxl"), 1), (std::vector<ItemID>{2, 3}));
    EXPECT_EQ(table.references.targets(fourCC("dimg"), 4), (std::vector<ItemID>{1, 1, 2}));
    EXPECT_EQ(table.references.sources(fourCC("dimg"), 1), (std::vector<ItemID>{4}));
    EXPECT_TRUE(table.references.targets(fourCC("thmb"), 2).empty());
}

TEST(ItemTable, dataLieInTheFileInTheHeaderOrInAnotherItem) {
    const Bytes located = places({place(1, 0, 100, 40), place(2, 1, 2, 3), place(3, 2, 10, 5)});
    const Bytes before = joined({entries({entry(1, "hvc1"), entry(2, "grid"), entry(3, "hvc1")}), located,
                                 fullBox("iref", 0, 0, {reference("iloc", 3, {u16(1)})})});
    const ItemTable table = sound({before, box("idat", {Bytes(8)})}, 50);
    const std::uint64_t itemData = 50 + 4 + before.size() + 8;
    EXPECT_EQ(table.item(1)->data, (std::vector<FileRange>{{100, 40}}));
    EXPECT_EQ(table.item(2)->data, (std::vector<FileRange>{{itemData + 2, 3}}));
    EXPECT_EQ(table.item(3)->data, (std::vector<FileRange>{{110, 5}}));
}

TEST(ItemTable, aLengthOfZeroReachesToTheEnd) {
    const ItemTable table =
        sound({entries({entry(1, "hvc1"), entry(2, "grid")}),
               places({place(1, 0, 900, 0), place(2, 1, 6, 0)}), box("idat", {Bytes(8)})});
    EXPECT_EQ(table.item(1)->data, (std::vector<FileRange>{{900, 100}}));
    EXPECT_EQ(table.item(2)->data.front().length, 2u);
}

TEST(ItemTable, extentsAreJoinedAndStartFromABase) {
    const Bytes located =
        fullBox("iloc", 0, 0,
                {u16(0x2240), u16(1), u16(1), u16(0), u32(500), u16(2), u16(10), u16(20), u16(100), u16(5)});
    const ItemTable table = sound({entries({entry(1, "hvc1")}), located});
    EXPECT_EQ(table.item(1)->data, (std::vector<FileRange>{{510, 20}, {600, 5}}));
}

TEST(ItemTable, dataOutsideTheFileCannotBeRead) {
    const ItemTable table = sound({entries({entry(1, "hvc1"), entry(2, "hvc1"), entry(3, "hvc1")}),
                                   places({place(1, 0, 990, 11), place(2, 0, 1001, 0), place(3, 1, 0, 1)})});
    for (const ItemID id : {1, 2, 3})
        EXPECT_TRUE(table.item(id)->unreadable) << id;
}

TEST(ItemTable, overlappingExtentsAreNotLongerThanTheFile) {
    const auto located = [](unsigned count) {
        Bytes extents;
        for (unsigned i = 0; i < count; ++i)
            extents = joined({extents, u32(0), u32(500)});
        return fullBox("iloc", 0, 0, {u16(0x4400), u16(1), u16(1), u16(0), u16(count), extents});
    };
    EXPECT_FALSE(sound({entries({entry(1, "hvc1")}), located(2)}).item(1)->unreadable);
    EXPECT_TRUE(sound({entries({entry(1, "hvc1")}), located(3)}).item(1)->unreadable);
}

TEST(ItemTable, itemsThatAreCutFromEachOtherCannotBeRead) {
    const ItemTable table =
        sound({entries({entry(1, "hvc1"), entry(2, "hvc1")}), places({place(1, 2, 0, 1), place(2, 2, 0, 1)}),
               fullBox("iref", 0, 0, {reference("iloc", 1, {u16(2)}), reference("iloc", 2, {u16(1)})})});
    EXPECT_TRUE(table.item(1)->unreadable);
}

TEST(ItemTable, itemsOfManyPartsOfManyPartsEndQuickly) {
    Bytes all;
    constexpr unsigned depth = 4, count = 60000;
    for (unsigned id = 1; id <= depth; ++id) {
        Bytes extents;
        extents.reserve(count * 12);
        for (unsigned i = 0; i < count; ++i)
            for (const unsigned value : {1u, 0u, 1u})
                appendBigEndian(extents, value, 4);
        all = joined({all, u16(id), u16(id == depth ? 0 : 2), u16(0), u16(count), extents});
    }
    const LoadedBox box =
        meta({entries({entry(1, "hvc1"), entry(2, "hvc1"), entry(3, "hvc1"), entry(4, "hvc1")}),
              fullBox("iloc", 1, 0, {u16(0x4404), u16(depth), all}),
              fullBox("iref", 0, 0,
                      {reference("iloc", 1, {u16(2)}), reference("iloc", 2, {u16(3)}),
                       reference("iloc", 3, {u16(4)})})});
    const Result<ItemTable> table = readItemTable(box, std::uint64_t{1} << 40);
    ASSERT_TRUE(table);
    EXPECT_TRUE(table->item(1)->unreadable);
}

TEST(ItemTable, dataInOtherFilesCannotBeRead) {
    const Bytes located =
        fullBox("iloc", 0, 0, {u16(0x4400), u16(1), u16(1), u16(1), u16(1), u32(0), u32(5)});
    EXPECT_EQ(sound({entries({entry(1, "hvc1")}), located}).item(1)->unreadable->reason, Reason::unsupported);
}

} // namespace kestrine::heif
