#include "platform/imageio/heif/PictureTree.h"

#include "tests/platform/imageio/heif/Boxes.h"

#include <gtest/gtest.h>

namespace kestrine::heif {

namespace {

using namespace testing;

const Bytes eightBits = box("av1C", {u8(0x81), u8(0), u8(0), u8(0)});
const Bytes tenBits = box("av1C", {u8(0x81), u8(0), u8(0x40), u8(0)});

Bytes ispe(unsigned width, unsigned height) { return fullBox("ispe", 0, 0, {u32(width), u32(height)}); }

Bytes gridOf(unsigned rows, unsigned columns, unsigned width, unsigned height) {
    return joined({u8(0), u8(1), u8(rows - 1), u8(columns - 1), u32(width), u32(height)});
}

/// Makes a table of items without a file.
class Items {
public:
    /// `data` go into the file.
    Items& add(ItemID id, const char (&type)[5], std::initializer_list<Bytes> properties,
               const Bytes& data = Bytes(4)) {
        Item item;
        item.type = fourCC(type);
        item.data = {{file_.size(), data.size()}};
        file_.insert(file_.end(), data.begin(), data.end());
        for (const Bytes& property : properties) {
            kept_.push_back(std::make_unique<Bytes>(property));
            item.properties.push_back({boxesIn(*kept_.back())->front(), false});
        }
        table_.items.emplace(id, std::move(item));
        return *this;
    }
    Items& coded(ItemID id, unsigned width, unsigned height, const Bytes& configuration = eightBits) {
        return add(id, "av01", {ispe(width, height), configuration});
    }
    Items& refer(const char (&type)[5], ItemID from, std::vector<ItemID> to) {
        table_.references.add(fourCC(type), from, std::move(to));
        return *this;
    }
    Items& markEssential(ItemID id) {
        table_.items[id].properties.back().isEssential = true;
        return *this;
    }
    Result<PictureNodePointer> tree(ItemID id = 1) const {
        return readPictureTree(table_, id, *readerOfBytes(file_));
    }
    std::string failure(ItemID id = 1) const {
        const auto read = tree(id);
        return read ? "none" : read.failure().text;
    }

private:
    ItemTable table_;
    Bytes file_;
    std::vector<std::unique_ptr<Bytes>> kept_;
};

Items tiles(unsigned rows, unsigned columns, unsigned width, unsigned height, unsigned side = 64) {
    Items items;
    items.coded(2, side, side).add(1, "grid", {}, gridOf(rows, columns, width, height));
    items.refer("dimg", 1, std::vector<ItemID>(rows * columns, 2));
    return items;
}

} // namespace

TEST(PictureTree, aCodedPictureHasTheSizeOfItsProperty) {
    const auto tree = Items().coded(1, 40, 30, tenBits).tree();
    ASSERT_TRUE(tree);
    EXPECT_EQ((*tree)->size, (Size{40, 30}));
    EXPECT_EQ((*tree)->bits, 10u);
    EXPECT_FALSE((*tree)->isMonochrome);
}

TEST(PictureTree, aPictureWithoutSizeOrConfigurationIsDamage) {
    EXPECT_FALSE(Items().add(1, "av01", {eightBits}).tree());
    EXPECT_FALSE(Items().add(1, "av01", {ispe(4, 4)}).tree());
    EXPECT_FALSE(Items().add(1, "hvc1", {ispe(4, 4), eightBits}).tree());
    EXPECT_FALSE(Items().coded(1, 0, 4).tree());
    EXPECT_FALSE(Items().tree());
}

TEST(PictureTree, unknownPropertiesAreRefusedIfTheyAreEssential) {
    Items items;
    items.add(1, "av01", {ispe(4, 4), eightBits, box("new!", {})});
    EXPECT_TRUE(items.tree());
    EXPECT_EQ(items.markEssential(1).failure(),
              "HEIF and AVIF pictures with the property \"new!\" are not supported");
}

TEST(PictureTree, unknownKindsOfItemsAreNamed) {
    EXPECT_EQ(Items().add(1, "unci", {}).failure(), "HEIF pictures of the kind \"unci\" are not supported");
}

TEST(PictureTree, tilesMayReachBeyondTheEdges) {
    const auto tree = tiles(2, 3, 150, 100).tree();
    ASSERT_TRUE(tree);
    EXPECT_EQ((*tree)->size, (Size{150, 100}));
    EXPECT_EQ((*tree)->parts.size(), 6u);
    EXPECT_EQ((*tree)->codedPixels, 6u * 64 * 64);
}

TEST(PictureTree, tilesMustCoverThePictureAndNotLieOutside) {
    EXPECT_TRUE(tiles(2, 2, 128, 128).tree());
    EXPECT_FALSE(tiles(2, 2, 129, 128).tree());
    EXPECT_FALSE(tiles(2, 2, 128, 129).tree());
    EXPECT_FALSE(tiles(2, 3, 128, 128).tree());
    EXPECT_FALSE(tiles(3, 2, 128, 128).tree());
}

TEST(PictureTree, aGridNeedsAllOfItsTilesInOneSize) {
    Items items;
    items.coded(2, 64, 64).coded(3, 64, 32).add(1, "grid", {}, gridOf(1, 2, 128, 64));
    EXPECT_FALSE(Items(std::move(items)).refer("dimg", 1, {2, 3}).tree());
    EXPECT_FALSE(tiles(1, 2, 128, 64).refer("dimg", 4, {}).add(4, "grid", {}, gridOf(1, 2, 128, 64)).tree(4));
}

TEST(PictureTree, theMostBitsAndAnyColourOfTheTilesCount) {
    const Bytes grey = box("av1C", {u8(0x81), u8(0), u8(0x10), u8(0)});
    Items items;
    items.coded(2, 64, 64, grey).coded(3, 64, 64, tenBits).add(1, "grid", {}, gridOf(1, 2, 128, 64));
    const auto tree = items.refer("dimg", 1, {2, 3}).tree();
    ASSERT_TRUE(tree);
    EXPECT_EQ((*tree)->bits, 10u);
    EXPECT_FALSE((*tree)->isMonochrome);
}

TEST(PictureTree, aPictureThatContainsItselfIsRefused) {
    Items items;
    items.add(1, "iden", {}).refer("dimg", 1, {1});
    EXPECT_FALSE(items.tree());
}

TEST(PictureTree, gridsOfGridsOfGridsCountAllOfTheirPixels) {
    Items items;
    items.coded(10, 64, 64);
    for (ItemID id = 9; id > 4; --id) {
        items.add(id, "grid", {}, gridOf(1, 1, 64, 64));
        items.refer("dimg", id, {id + 1});
    }
    items.add(1, "iovl", {}, joined({u8(0), u8(0), Bytes(8), u16(64), u16(64), Bytes(400)}));
    items.refer("dimg", 1, std::vector<ItemID>(100, 5));
    const auto tree = items.tree();
    ASSERT_TRUE(tree) << tree.failure().text;
    EXPECT_EQ((*tree)->codedPixels, 100u * 64 * 64);
}

TEST(PictureTree, aPictureOfTooManyPicturesIsRefused) {
    for (const auto& [parts, isAccepted] : {std::pair{256u, true}, {257u, false}}) {
        Items items;
        items.coded(3, 1, 1);
        for (const ItemID id : {2, 1}) {
            items.add(id, "iovl", {},
                      joined({u8(0), u8(0), Bytes(8), u16(64), u16(64), Bytes(std::size_t{4} * parts)}));
            items.refer("dimg", id, std::vector<ItemID>(parts, id + 1));
        }
        EXPECT_EQ(items.tree().ok(), isAccepted) << parts;
    }
}

TEST(PictureTree, auxiliaryPicturesThatAreIgnoredMayHaveUnknownProperties) {
    Items items;
    items.coded(1, 40, 30).add(2, "av01", {fullBox("auxC", 0, 0, {Bytes{'x', 0}}), box("new!", {})});
    EXPECT_TRUE(items.markEssential(2).refer("auxl", 2, {1}).tree());
}

TEST(PictureTree, onlyAlphaPlanesAreUsed) {
    const Bytes alpha =
        fullBox("auxC", 0, 0, {Bytes{'u', 'r', 'n', ':', 'm', 'p', 'e', 'g', ':', 'h', 'e', 'v', 'c', ':',
                                     '2', '0', '1', '5', ':', 'a', 'u', 'x', 'i', 'd', ':', '1', 0}});
    const auto withAuxiliary = [&](unsigned width, const Bytes& type) {
        Items items;
        items.coded(1, 40, 30).add(2, "av01", {ispe(width, 30), eightBits, type}).refer("auxl", 2, {1});
        return items;
    };
    EXPECT_TRUE((*withAuxiliary(40, alpha).tree())->hasAlpha);
    EXPECT_FALSE((*withAuxiliary(40, fullBox("auxC", 0, 0, {Bytes{'x', 0}})).tree())->hasAlpha);
    EXPECT_TRUE((*withAuxiliary(20, alpha).tree())->hasAlpha);
    EXPECT_TRUE((*withAuxiliary(40, alpha).refer("prem", 1, {2}).tree())->isPremultiplied);
    EXPECT_FALSE((*withAuxiliary(40, alpha).tree())->isPremultiplied);
}

} // namespace kestrine::heif
